#include "znGeom/planar/shapes/internal/orientation.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace znGeom::internal {

using znLinear::Point2;

namespace {

/// A number and what rounding took from it: their sum is the exact result.
struct TwoDoubles
{
    double head, tail;
};

TwoDoubles difference(double a, double b)
{
    const double head = a - b, fromB = a - head, fromA = head + fromB;
    return {head, (a - fromA) + (fromB - b)};
}

/// The upper half of the digits of a number; the rest fits in as many.
double upperHalf(double value)
{
    const double product = value * (0x1p27 + 1);
    return product - (product - value);
}

TwoDoubles product(double a, double b)
{
    const double head = a * b, upperA = upperHalf(a), upperB = upperHalf(b);
    const double lowerA = a - upperA, lowerB = b - upperB;
    return {head, ((upperA * upperB - head) + upperA * lowerB + lowerA * upperB) + lowerA * lowerB};
}

/// The determinant with twice the digits. False where even that leaves the sign open, and where numbers are so large or
/// small that digits would be lost.
bool refinedOrientation(const Point2& p, const Point2& a, const Point2& b, int& sign)
{
    const TwoDoubles ax = difference(a.x, p.x), ay = difference(a.y, p.y);
    const TwoDoubles bx = difference(b.x, p.x), by = difference(b.y, p.y);
    const TwoDoubles left = product(ax.head, by.head), right = product(ay.head, bx.head);
    sign = 0;
    if ((ax.head == 0 || by.head == 0) && (ay.head == 0 || bx.head == 0)) return true;
    for (const double head : {ax.head, ay.head, bx.head, by.head})
        if (!(std::fabs(head) < 0x1p500)) return false;
    const double magnitude = std::fabs(left.head) + std::fabs(right.head);
    if (!(magnitude > 0x1p-900)) return false;

    // Plain arithmetic has left the two products so near each other that the difference of their heads is exact.
    const double heads = left.head - right.head, tails = left.tail - right.tail;
    const bool noTails = ax.tail == 0 && ay.tail == 0 && bx.tail == 0 && by.tail == 0;
    const double crossed = (ax.head * by.tail + ax.tail * by.head) - (ay.head * bx.tail + ay.tail * bx.head);
    const double determinant = heads + (tails + crossed);
    sign = determinant > 0 ? 1 : determinant < 0 ? -1 : 0;
    return std::fabs(determinant) > 0x1p-101 * magnitude || (noTails && heads == 0);
}

/// A sum of products of doubles as one long integer, after Kulisch, "Computer Arithmetic and Validity" (2008). Its
/// digits reach from the smallest product of two doubles to the sum of several of the largest.
class LongSum
{
public:
    void addProduct(double a, double b)
    {
        if (a == 0 || b == 0) return;
        const Parts first(a), second(b);
        const int place = first.exponent + second.exponent - 2 * Parts::lowestExponent;
        add(first.lower * second.lower, place);
        add(first.lower * second.upper + first.upper * second.lower, place + Parts::lowerLength);
        add(first.upper * second.upper, place + 2 * Parts::lowerLength);
    }

    int sign() const
    {
        std::int64_t carry = 0;
        bool isZero = true;
        for (int i = m_first; i < m_end; ++i) {
            const std::int64_t sum = m_digits[i] + carry;
            carry = sum >> digitLength;
            isZero = isZero && (sum & digitMask) == 0;
        }
        return carry < 0 ? -1 : carry > 0 || !isZero ? 1 : 0;
    }

private:
    static constexpr int digitLength = 32;
    static constexpr std::int64_t digitMask = (std::int64_t(1) << digitLength) - 1;

    /// A double as (upper * 2^lowerLength + lower) * 2^exponent, both of its sign.
    struct Parts
    {
        static constexpr int length = 53, lowerLength = 27, lowestExponent = -1073 - length;

        std::int64_t upper, lower;
        int exponent;

        explicit Parts(double value)
        {
            const auto digits = static_cast<std::int64_t>(std::ldexp(std::frexp(value, &exponent), length));
            exponent -= length;
            upper = digits / (std::int64_t(1) << lowerLength);
            lower = digits % (std::int64_t(1) << lowerLength);
        }
    };

    /// Adds value * 2^place; a value has 55 binary digits at most.
    void add(std::int64_t value, int place)
    {
        const int first = place / digitLength, offset = place % digitLength;
        const std::int64_t lower = (value & digitMask) << offset;
        m_digits[first] += lower & digitMask;
        m_digits[first + 1] += (lower >> digitLength) + (value >> digitLength) * (std::int64_t(1) << offset);
        m_first = std::min(m_first, first);
        m_end = std::max(m_end, first + 2);
    }

    static constexpr int numDigits = 2 * (1024 - Parts::lowestExponent) / digitLength + 2;

    std::int64_t m_digits[numDigits] = {}; ///< with room for the carries of many sums in each
    int m_first = numDigits, m_end = 0;    ///< the digits that are in use
};

} // namespace

int exactOrientation(const Point2& p, const Point2& a, const Point2& b)
{
    int sign = 0;
    if (refinedOrientation(p, a, b, sign)) return sign;
    LongSum determinant;
    for (const auto& [first, second] : {std::pair(a, b), std::pair(p, a), std::pair(b, p)}) {
        determinant.addProduct(first.x, second.y);
        determinant.addProduct(-first.y, second.x);
    }
    return determinant.sign();
}

} // namespace znGeom::internal
