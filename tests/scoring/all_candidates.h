// Compares every candidate of a picture with the slow oracle.
#ifndef VISTATRIM_TESTS_SCORING_ALL_CANDIDATES_H
#define VISTATRIM_TESTS_SCORING_ALL_CANDIDATES_H

#include "analysis/test_pictures.h"

namespace scoringTests {

// Scores all candidates of the default tables in one walk and compares them bit for bit, except the
// composition score, which goes through a BLAS dot product. That may differ by what adding 304
// floats in another order can change.
void ExpectAllCandidatesMatchTheOracle(const vistaTrim::testPictures::Picture& picture);

} // namespace scoringTests

#endif
