/// `InterpolateAlg`: a curve y(x) through samples.
#pragma once

#include <memory>

#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"

namespace znGeom {

/// Interpolates samples (x, y) by one of four methods, with arithmetic in `double`.
///
///     InterpolateAlg curve;
///     curve.setInput(samples);
///     const double y = curve.evaluate(0.5);
///
/// The x of the samples must ascend; equal ones divide by zero. Beyond the samples the first or last piece goes on.
/// What a method needs is computed at its first `evaluate` and kept until the next `setInput`, also when another method
/// is used in between. An object belongs to one thread.
///
/// The static members do the same on arrays of the caller's, of n entries each. They check neither order nor spacing.
class ZNGEOM_API InterpolateAlg : public zn::ReferenceCount
{
public:
    /// Of these, splines are for smooth curves. A polynomial through more than a few samples swings between them. Any
    /// other value is a spline too.
    enum EInterpolationHint : int {
        eCubicSpline = 0, ///< of two continuous derivatives, and three at the second and second to last sample
                          ///< ("not a knot"); needs four samples, and is piecewise linear with fewer
        eNeville = 1,     ///< the polynomial through all samples by Neville's scheme, quadratic at each evaluation
        eNewtonForm = 2,  ///< the same by divided differences: quadratic once, then linear
        eLinear = 3       ///< straight lines
    };

    InterpolateAlg() = default;
    ~InterpolateAlg() override = default;

    /// Copies the samples and forgets what was computed from others.
    void setInput(const zn::vector<znLinear::Point2Flt>& samples);
    void setInterpolationHint(EInterpolationHint hint) { m_hint = hint; }

    /// The curve at `t`. Without samples 0; with one, its y. Splines and lines take the logarithm of the number of
    /// samples, after a linear first time.
    double evaluate(double t);

    /// The line through two points.
    static double simpleLinear(double x0, double y0, double x1, double y1, double t);
    /// Straight lines through all samples. Where t is the x of a sample the piece that starts there is taken.
    static double simpleLinear(int n, const double* x, const double* y, double t);

    /// The value at t of the polynomial through all samples. Takes memory for n numbers.
    static double neville(int n, const double* x, const double* y, double t);

    /// Divided differences: the coefficients of the polynomial through all samples in Newton's form, for `nf_eval`.
    static void divdiff(int n, const double* x, const double* y, double* coefficients);
    static double nf_eval(int n, const double* x, const double* coefficients, double t);

    /// The coefficients of a cubic spline through (x, f), for `spline_eval`: on the piece from sample s it is
    /// f[s] + b[s] u + c[s] u^2 + d[s] u^3 with u = t - x[s]. There are n - 1 pieces; the last entries of `b` and `d`
    /// are not written. Linear, with memory for 4 n numbers.
    ///
    /// This one is a single cubic over the first two pieces, and over the last two. With less than four samples the
    /// pieces are straight.
    static void cubic_nak(int n, const double* x, const double* f, double* b, double* c, double* d);
    /// This one has given slopes at the first and last sample. With less than two samples nothing is written.
    static void cubic_clamped(int n, const double* x, const double* f, double* b, double* c, double* d,
                              double slopeStart, double slopeEnd);
    static double spline_eval(int n, const double* x, const double* f, const double* b, const double* c,
                              const double* d, double t);

private:
    static void tridiagonal(int n, const double* lower, double* diagonal, double* upper, double* rhs);

    void prepareSamples();
    double evaluateNewtonForm(double t);
    double evaluateSpline(double t);

    zn::vector<znLinear::Point2Flt> m_input;
    EInterpolationHint m_hint = eCubicSpline;
    int m_n = 0;
    std::unique_ptr<double[]> m_x, m_y; ///< null until the first evaluation
    std::unique_ptr<double[]> m_newton; ///< null until needed, as are those below
    std::unique_ptr<double[]> m_b, m_c, m_d;
};

} // namespace znGeom
