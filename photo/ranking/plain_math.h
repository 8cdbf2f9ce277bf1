// Logarithm and exponential with the same bits on every machine.
//
// A C library picks its own forms of both by processor, and they differ in the last bit. A last
// bit decides between two crops that do equally well, so these are built from sums and products.
#ifndef VISTATRIM_PHOTO_RANKING_PLAIN_MATH_H
#define VISTATRIM_PHOTO_RANKING_PLAIN_MATH_H

namespace vistaTrim::photo {

// Natural logarithm of a normal number above 0; relative error below 1e-14.
double PlainLog(double x);

// e to the power of x; relative error below 1e-14. 0 below -700; x must not exceed 700.
double PlainExp(double x);

} // namespace vistaTrim::photo

#endif
