#include "znGeom/foundation/linear/tolerance.h"

namespace znLinear {

// These suit a mesh a few units in size; 1e-10 is the only power of ten with which meshes from a millimetre to ten
// kilometres (in metres) neither lose true features to the tolerance nor drown it in rounding.
double epsilonTol = 1e-10;
double epsilon2Tol = 1e-12;
double parallelTol = 1e-8;
double perpendicular2Tol = 1e-12;
float epsilonTolFlt = 1e-7f;

} // namespace znLinear
