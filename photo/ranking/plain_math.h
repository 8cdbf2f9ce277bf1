// Logarithm and exponential with the same bits on every machine.
//
// C libraries pick implementations of both by processor, and those differ in the last bit. The last
// bit decides between two crops that score alike, so these use sums and products only.
#ifndef VISTATRIM_PHOTO_RANKING_PLAIN_MATH_H
#define VISTATRIM_PHOTO_RANKING_PLAIN_MATH_H

namespace vistaTrim::photo {

// Natural logarithm of a normal number above 0; relative error below 1e-14.
double PlainLog(double x);

// e to the power of x; relative error below 1e-14. 0 below -700; x must not exceed 700.
double PlainExp(double x);

} // namespace vistaTrim::photo

#endif
