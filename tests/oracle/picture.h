// A picture as a host would pass it: three bytes per pixel, rows without padding.
#ifndef VISTATRIM_TESTS_ORACLE_PICTURE_H
#define VISTATRIM_TESTS_ORACLE_PICTURE_H

#include <cstdint>
#include <vector>

namespace slowOracle {

struct Picture {
    int Cols = 0;
    int Rows = 0;
    std::vector<uint8_t> Bytes; // 3 x Cols x Rows
};

} // namespace slowOracle

#endif
