/// Four numbers that are processed at once.
#pragma once

#include <cstddef>
#include <cstring>

namespace znGeom::internal {

/// With the operators of its elements, element by element.
using Float4 = float __attribute__((vector_size(16)));
using Mask4 = int __attribute__((vector_size(16)));

inline Float4 lesser(Float4 a, Float4 b) { return a < b ? a : b; }
inline Float4 greater(Float4 a, Float4 b) { return a > b ? a : b; }

/// The places among the first three in which the mask is set, bit i for place i.
inline unsigned places(Mask4 mask)
{
#if defined(__SSE__)
    return static_cast<unsigned>(__builtin_ia32_movmskps(reinterpret_cast<Float4>(mask))) & 7u;
#else
    return (mask[0] ? 1u : 0u) | (mask[1] ? 2u : 0u) | (mask[2] ? 4u : 0u);
#endif
}
inline unsigned placesLess(Float4 a, Float4 b) { return places(a < b); }
inline unsigned placesLessOrEqual(Float4 a, Float4 b) { return places(a <= b); }

/// The places in `bits` from `set`, the rest from `clear`.
inline Float4 pick(int bits, Float4 set, Float4 clear)
{
    alignas(16) static constexpr int masks[8][4] = {{0, 0, 0, 0},  {-1, 0, 0, 0},  {0, -1, 0, 0},  {-1, -1, 0, 0},
                                                    {0, 0, -1, 0}, {-1, 0, -1, 0}, {0, -1, -1, 0}, {-1, -1, -1, 0}};
    Mask4 mask;
    std::memcpy(&mask, masks[bits], sizeof mask);
    return reinterpret_cast<Float4>((reinterpret_cast<Mask4>(set) & mask) | (reinterpret_cast<Mask4>(clear) & ~mask));
}

/// Four numbers from anywhere.
inline Float4 loadFloat4(const float* from)
{
    Float4 result;
    std::memcpy(&result, from, sizeof result);
    return result;
}

/// For callers that need three floats.
inline const float* asFloats(const Float4& numbers) { return reinterpret_cast<const float*>(&numbers); }

/// Over the first three.
inline float dot(Float4 a, Float4 b)
{
    const Float4 products = a * b;
    return products[0] + products[1] + products[2];
}
inline float length2(Float4 v) { return dot(v, v); }

/// The positions of a mesh. The fourth number of each is arbitrary.
class Float4Positions
{
public:
    Float4Positions(const float* vertices, int count) : m_vertices(vertices), m_last(count - 1) {}

    const float* at(int vertex) const { return m_vertices + 3 * std::ptrdiff_t{vertex}; }
    Float4 operator[](int vertex) const
    {
        // After the last one there may be nothing to read.
        const float* from = at(vertex);
        return vertex < m_last ? loadFloat4(from) : Float4{from[0], from[1], from[2], 0};
    }

private:
    const float* m_vertices;
    int m_last;
};

} // namespace znGeom::internal
