#include "znGeom/planar/strokes/interpolate_alg.h"

#include <algorithm>

namespace znGeom {
namespace {

std::unique_ptr<double[]> makeArray(int n) { return std::make_unique<double[]>(static_cast<size_t>(n)); }

/// The sample at which the piece that holds t starts: the first or last piece beyond the samples. For two samples or
/// more.
int pieceAt(int n, const double* x, double t)
{
    return static_cast<int>(std::upper_bound(x + 1, x + n - 1, t) - x) - 1;
}

/// What both splines are made from: the widths of the pieces, and the rows of the system for c.
struct SplineRows
{
    explicit SplineRows(int n, const double* x)
        : memory(makeArray(4 * n)), h(memory.get()), lower(h + n), upper(h + 2 * n), diagonal(h + 3 * n)
    {
        for (int i = 0; i < n - 1; ++i) h[i] = x[i + 1] - x[i];
    }

    /// The change of slope at the sample between the pieces i and i + 1.
    double bend(const double* f, int i) const
    {
        return 3 / h[i + 1] * (f[i + 2] - f[i + 1]) - 3 / h[i] * (f[i + 1] - f[i]);
    }

    /// b and d from c.
    void finish(int n, const double* f, double* b, const double* c, double* d) const
    {
        for (int i = 0; i < n - 1; ++i) {
            d[i] = (c[i + 1] - c[i]) / (3 * h[i]);
            b[i] = (f[i + 1] - f[i]) / h[i] - (2 * c[i] + c[i + 1]) * h[i] / 3;
        }
    }

    std::unique_ptr<double[]> memory;
    double *h, *lower, *upper, *diagonal;
};

} // namespace

void InterpolateAlg::setInput(const zn::vector<znLinear::Point2Flt>& samples)
{
    m_input = samples;
    m_n = m_input.size();
    for (auto* array : {&m_x, &m_y, &m_newton, &m_b, &m_c, &m_d}) array->reset();
}

double InterpolateAlg::evaluate(double t)
{
    if (m_n == 0) return 0;
    prepareSamples();
    switch (m_hint) {
    case eNeville:
        return neville(m_n, m_x.get(), m_y.get(), t);
    case eNewtonForm:
        return evaluateNewtonForm(t);
    case eLinear:
        return simpleLinear(m_n, m_x.get(), m_y.get(), t);
    default:
        return m_n < 4 ? simpleLinear(m_n, m_x.get(), m_y.get(), t) : evaluateSpline(t);
    }
}

void InterpolateAlg::prepareSamples()
{
    if (m_x) return;
    m_x = makeArray(m_n);
    m_y = makeArray(m_n);
    for (int i = 0; i < m_n; ++i) {
        m_x[static_cast<size_t>(i)] = double(m_input[i].x);
        m_y[static_cast<size_t>(i)] = double(m_input[i].y);
    }
}

double InterpolateAlg::evaluateNewtonForm(double t)
{
    if (!m_newton) {
        m_newton = makeArray(m_n);
        divdiff(m_n, m_x.get(), m_y.get(), m_newton.get());
    }
    return nf_eval(m_n, m_x.get(), m_newton.get(), t);
}

double InterpolateAlg::evaluateSpline(double t)
{
    if (!m_b) {
        m_b = makeArray(m_n);
        m_c = makeArray(m_n);
        m_d = makeArray(m_n);
        cubic_nak(m_n, m_x.get(), m_y.get(), m_b.get(), m_c.get(), m_d.get());
    }
    return spline_eval(m_n, m_x.get(), m_y.get(), m_b.get(), m_c.get(), m_d.get(), t);
}

double InterpolateAlg::simpleLinear(double x0, double y0, double x1, double y1, double t)
{
    return (t - x0) * (y1 - y0) / (x1 - x0) + y0;
}

double InterpolateAlg::simpleLinear(int n, const double* x, const double* y, double t)
{
    if (n < 2) return n == 1 ? y[0] : 0;
    const int s = pieceAt(n, x, t);
    return simpleLinear(x[s], y[s], x[s + 1], y[s + 1], t);
}

double InterpolateAlg::neville(int n, const double* x, const double* y, double t)
{
    if (n < 2) return n == 1 ? y[0] : 0;
    const auto memory = makeArray(n);
    double* const q = memory.get();
    std::copy_n(y, n, q);
    for (int j = 1; j < n; ++j)
        for (int i = n - 1; i >= j; --i) q[i] = ((t - x[i - j]) * q[i] - (t - x[i]) * q[i - 1]) / (x[i] - x[i - j]);
    return q[n - 1];
}

void InterpolateAlg::divdiff(int n, const double* x, const double* y, double* coefficients)
{
    std::copy_n(y, n, coefficients);
    for (int j = 1; j < n; ++j)
        for (int i = n - 1; i >= j; --i) coefficients[i] = (coefficients[i] - coefficients[i - 1]) / (x[i] - x[i - j]);
}

double InterpolateAlg::nf_eval(int n, const double* x, const double* coefficients, double t)
{
    if (n < 1) return 0;
    double value = coefficients[n - 1];
    for (int i = n - 2; i >= 0; --i) value = value * (t - x[i]) + coefficients[i];
    return value;
}

void InterpolateAlg::cubic_nak(int n, const double* x, const double* f, double* b, double* c, double* d)
{
    const SplineRows rows(std::max(n, 0), x);
    if (n < 4) {
        std::fill_n(c, n, 0.0);
        return rows.finish(n, f, b, c, d);
    }
    // The unknowns are c at the inner samples.
    const double* const h = rows.h;
    for (int i = 0; i <= n - 4; ++i) rows.lower[i] = rows.upper[i] = h[i + 1];
    for (int i = 0; i <= n - 3; ++i) {
        rows.diagonal[i] = 2 * (h[i] + h[i + 1]);
        c[i] = rows.bend(f, i);
    }
    // Two pieces are one cubic where c goes on in a straight line: that gives the outer two.
    const double first = h[0] * h[0] / h[1], last = h[n - 2] * h[n - 2] / h[n - 3];
    rows.diagonal[0] += first + h[0];
    rows.diagonal[n - 3] += last + h[n - 2];
    rows.upper[0] -= first;
    rows.lower[n - 4] -= last;
    tridiagonal(n - 2, rows.lower, rows.diagonal, rows.upper, c);
    for (int i = n - 3; i >= 0; --i) c[i + 1] = c[i];
    c[0] = (1 + h[0] / h[1]) * c[1] - h[0] / h[1] * c[2];
    c[n - 1] = (1 + h[n - 2] / h[n - 3]) * c[n - 2] - h[n - 2] / h[n - 3] * c[n - 3];
    rows.finish(n, f, b, c, d);
}

void InterpolateAlg::cubic_clamped(int n, const double* x, const double* f, double* b, double* c, double* d,
                                   double slopeStart, double slopeEnd)
{
    if (n < 2) return;
    const SplineRows rows(n, x);
    const double* const h = rows.h;
    for (int i = 0; i <= n - 2; ++i) rows.lower[i] = rows.upper[i] = h[i];
    rows.diagonal[0] = 2 * h[0];
    rows.diagonal[n - 1] = 2 * h[n - 2];
    c[0] = 3 / h[0] * (f[1] - f[0]) - 3 * slopeStart;
    c[n - 1] = 3 * slopeEnd - 3 / h[n - 2] * (f[n - 1] - f[n - 2]);
    for (int i = 0; i <= n - 3; ++i) {
        rows.diagonal[i + 1] = 2 * (h[i] + h[i + 1]);
        c[i + 1] = rows.bend(f, i);
    }
    tridiagonal(n, rows.lower, rows.diagonal, rows.upper, c);
    rows.finish(n, f, b, c, d);
}

double InterpolateAlg::spline_eval(int n, const double* x, const double* f, const double* b, const double* c,
                                   const double* d, double t)
{
    if (n < 2) return n == 1 ? f[0] : 0;
    const int s = pieceAt(n, x, t);
    const double u = t - x[s];
    return ((u * d[s] + c[s]) * u + b[s]) * u + f[s];
}

/// Solves a system of n rows in place: `rhs` becomes the solution. Without pivoting, which the rows of splines do not
/// need.
void InterpolateAlg::tridiagonal(int n, const double* lower, double* diagonal, double* upper, double* rhs)
{
    for (int i = 0; i <= n - 2; ++i) {
        upper[i] /= diagonal[i];
        diagonal[i + 1] -= lower[i] * upper[i];
    }
    rhs[0] /= diagonal[0];
    for (int i = 1; i < n; ++i) rhs[i] = (rhs[i] - lower[i - 1] * rhs[i - 1]) / diagonal[i];
    for (int i = n - 2; i >= 0; --i) rhs[i] -= upper[i] * rhs[i + 1];
}

} // namespace znGeom
