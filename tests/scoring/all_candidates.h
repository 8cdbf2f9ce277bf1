// Every candidate of a picture against the slow oracle.
#ifndef VISTATRIM_TESTS_SCORING_ALL_CANDIDATES_H
#define VISTATRIM_TESTS_SCORING_ALL_CANDIDATES_H

#include "analysis/test_pictures.h"

namespace scoringTests {

// All candidates of the default tables, scored by one walk: bit for bit, except the score that goes
// through a BLAS dot product. That one may be off by what summing 304 floats in another order can
// change.
void ExpectAllCandidatesAsSlow(const vistaTrim::testPictures::Picture& picture);

} // namespace scoringTests

#endif
