// Narrowing in functions of their own: numbers that were float for a moment have kept the bits of a float, whatever the
// compiler makes of two conversions in a row.
#include <znGeom/foundation/linear.h>
#include <znGeom/foundation/mesh/mesh_records.h>

#include <cstdio>
#include <cstring>

using namespace znLinear;

namespace {

[[gnu::noinline]] Point narrowed(const Point& p) { return Point(PointFlt(p)); }
[[gnu::noinline]] Point2 narrowed(const Point2& p) { return Point2(Point2Flt(p)); }
[[gnu::noinline]] Vector narrowed(const Vector& v) { return Vector(VectorFlt(v)); }
[[gnu::noinline]] Vector2 narrowed(const Vector2& v) { return Vector2(Vector2Flt(v)); }
[[gnu::noinline]] AffineMatrix narrowed(const AffineMatrix& m) { return AffineMatrix(AffineMatrixFlt(m)); }
[[gnu::noinline]] ProjMatrix narrowed(const ProjMatrix& m) { return ProjMatrix(ProjMatrixFlt(m)); }

[[gnu::noinline]] Point throughVertex(const Point& p)
{
    znGeom::MeshVertex vertex;
    vertex.set(&p.x);
    return vertex.asPoint();
}

[[gnu::noinline]] Vector throughNormal(const Normal& n)
{
    znGeom::MeshNormal normal;
    normal = n;
    return normal.asVector();
}

[[gnu::noinline]] Point2 throughUV(double u, double v)
{
    znGeom::MeshUV uv;
    uv.set(u, v);
    return {double(uv.u), double(uv.v)};
}

[[gnu::noinline]] Point throughBox(const double* at) { return Point(znGeom::BoundingBox(at).minPt()); }

int failures = 0;

// The numbers of a value, one after the other, beside what they were before.
template <typename T>
void compare(const char* what, const T& value, const double* before)
{
    double numbers[sizeof(T) / sizeof(double)];
    std::memcpy(numbers, &value, sizeof numbers);
    for (const double& number : numbers) {
        const volatile float expected = static_cast<float>(*before++);
        if (number == double(expected)) continue;
        std::printf("%s: a number is %.17g, not %.17g\n", what, number, double(expected));
        ++failures;
    }
}

} // namespace

int main()
{
    double numbers[16];
    for (int i = 0; i < 16; ++i) numbers[i] = 0.1 * (i + 1);
    AffineMatrix affine;
    std::memcpy(affine.m, numbers, sizeof affine.m);

    compare("Point", narrowed(Point(numbers)), numbers);
    compare("Point2", narrowed(Point2(numbers[0], numbers[1])), numbers);
    compare("Vector", narrowed(Vector(numbers)), numbers);
    compare("Vector2", narrowed(Vector2(numbers[0], numbers[1])), numbers);
    compare("AffineMatrix", narrowed(affine), numbers);
    compare("ProjMatrix", narrowed(ProjMatrix(numbers)), numbers);
    compare("MeshVertex", throughVertex(Point(numbers)), numbers);
    compare("MeshNormal", throughNormal(Normal(Promise(), numbers[0], numbers[1], numbers[2])), numbers);
    compare("MeshUV", throughUV(numbers[0], numbers[1]), numbers);
    compare("BoundingBox", throughBox(numbers), numbers);
    return failures == 0 ? 0 : 1;
}
