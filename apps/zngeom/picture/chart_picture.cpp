#include "apps/zngeom/picture/chart_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "apps/zngeom/picture/checkerboard.h"
#include "apps/zngeom/picture/legend.h"
#include "apps/zngeom/picture/panels.h"
#include "apps/zngeom/picture/projection.h"
#include "apps/zngeom/picture/viewpoint.h"
#include "znGeom/analysis/edge_sides.h"

namespace tool {

namespace {

constexpr int samplesPerPixel = 3;
constexpr Colour lightCell{236, 239, 243}, darkCell{92, 134, 178}, flipped{214, 50, 44}, border{226, 128, 20},
    panelBorder{225, 228, 232}, backOfLight{216, 197, 176}, backOfDark{141, 112, 82};

double areaOf(const znGeom::CompactMesh& mesh, int triangle)
{
    const auto corner = [&](int i) { return mesh.getVertices()[mesh.getTriangles()[triangle][i]].asPoint(); };
    return cross(corner(1) - corner(0), corner(2) - corner(0)).length() / 2;
}

/// How many cells of the board there are across the unit square: a few hundred of them would cover the surface if all
/// places had the size that is in the middle, in the logarithm and by area.
double chooseCells(const znGeom::CompactMesh& mesh, const znGeom::CompactMesh& flat)
{
    constexpr double wanted = 700, least = 16, most = 128;
    double area = 0, sum = 0;
    for (int triangle = 0; triangle < mesh.getNumTriangles(); ++triangle) {
        const double onMesh = areaOf(mesh, triangle), inChart = areaOf(flat, triangle);
        if (!(onMesh > 0) || !(inChart > 0)) continue;
        area += onMesh;
        sum += onMesh * std::log(onMesh / inChart);
    }
    return area > 0 ? std::round(std::clamp(std::sqrt(wanted / area * std::exp(sum / area)), least, most)) : least;
}

class ChartPainter
{
public:
    explicit ChartPainter(const znGeom::CompactMesh& mesh) : m_mesh(mesh)
    {
        znGeom::MeshEdgeSides edges;
        znGeom::meshEdgeSides(mesh, edges);
        for (int edge = 0; edge < edges.getNumEdges(); ++edge)
            if (const auto sides = edges.sides(edge); sides.size() == 1)
                m_borders.push_back(
                    {mesh.getTrianglesRaw()[sides[0]], mesh.getTrianglesRaw()[znGeom::cornerAtSideEnd(sides[0])]});
        m_flat.resizeVertexArray(mesh.getNumVertices());
        for (int i = 0; i < mesh.getNumVertices(); ++i)
            m_flat.getVertices()[i].set(mesh.getUVs()[i].u, mesh.getUVs()[i].v, 0);
        m_flat.copyTriangles(mesh.getNumTriangles(), mesh.getTrianglesRaw());
        m_cellsAcross = chooseCells(mesh, m_flat);
    }

    const znGeom::CompactMesh& flat() const { return m_flat; }
    std::size_t numBorders() const { return m_borders.size(); }
    std::size_t numFlipped() const
    {
        std::size_t count = 0;
        for (int triangle = 0; triangle < m_mesh.getNumTriangles(); ++triangle) count += isFlipped(triangle);
        return count;
    }

    void paintMesh(Canvas& canvas, const View& view, const Frame& frame) const
    {
        canvas.clipTo(frame);
        Projection(m_mesh, view).forEachTriangle([&](int triangle, const SeenTriangle& seen) {
            const Colour &light = seen.isFront ? lightCell : backOfLight, &dark = seen.isFront ? darkCell : backOfDark;
            fill(canvas, triangle, seen, shaded(light, brightness(seen)), shaded(dark, brightness(seen)));
        });
        paintBorders(canvas, m_mesh, view);
        outlinePanel(canvas, frame, panelBorder);
    }

    /// \param meshView  from where the mesh is seen: its light and shade show which place is which
    void paintChart(Canvas& canvas, const View& view, const View& meshView, const Frame& frame) const
    {
        canvas.clipTo(frame);
        const Projection projection(m_flat, view), onMesh(m_mesh, meshView);
        double area = 0;
        projection.forEachTriangle([&](int triangle, const SeenTriangle& seen) {
            SeenTriangle seenOnMesh;
            onMesh.see(triangle, seenOnMesh);
            fill(canvas, triangle, seen, shaded(lightCell, brightness(seenOnMesh)),
                 shaded(darkCell, brightness(seenOnMesh)));
            area += seen.area;
        });
        constexpr double leastMeanArea = 60; // of triangles whose outlines leave something of them
        if (area > leastMeanArea * m_flat.getNumTriangles())
            projection.forEachTriangle([&](int, const SeenTriangle& seen) { paintOutline(canvas, seen); });
        paintBorders(canvas, m_flat, view);
        outlinePanel(canvas, frame, panelBorder);
    }

private:
    static double brightness(const SeenTriangle& seen) { return 0.62 + 0.4 * seen.light; }

    bool isFlipped(int triangle) const
    {
        const znGeom::MeshTriangle& corners = m_mesh.getTriangles()[triangle];
        const auto image = [&](int corner) {
            const znGeom::MeshUV& uv = m_mesh.getUVs()[corners[corner]];
            return znLinear::Point2(double(uv.u), double(uv.v));
        };
        return cross(image(1) - image(0), image(2) - image(0)) < 0;
    }

    void fill(Canvas& canvas, int triangle, const SeenTriangle& seen, const Colour& light, const Colour& dark) const
    {
        std::array<BoardSpot, 3> spots;
        for (int i = 0; i < 3; ++i) {
            const znGeom::MeshUV& uv = m_mesh.getUVs()[m_mesh.getTriangles()[triangle][i]];
            spots[static_cast<std::size_t>(i)] = {seen.corners[i], m_cellsAcross * double(uv.u),
                                                  m_cellsAcross * double(uv.v)};
        }
        if (isFlipped(triangle))
            canvas.fillTriangle(seen.corners[0], seen.corners[1], seen.corners[2], flipped);
        else
            fillWithBoard(canvas, spots, light, dark);
    }

    static void paintOutline(Canvas& canvas, const SeenTriangle& seen)
    {
        constexpr double ahead = 0.5, width = 0.7;
        for (int i = 0; i < 3; ++i) {
            Spot from = seen.corners[i], to = seen.corners[znGeom::cornerAfter(i)];
            from.depth -= ahead, to.depth -= ahead;
            canvas.drawLine(from, to, width, {150, 164, 180});
        }
    }

    void paintBorders(Canvas& canvas, const znGeom::CompactMesh& mesh, const View& view) const
    {
        constexpr double ahead = 3, width = 2.4;
        for (const auto& [start, end] : m_borders) {
            Spot from = view.at(mesh.getVertices()[start]), to = view.at(mesh.getVertices()[end]);
            from.depth -= ahead, to.depth -= ahead;
            canvas.drawLine(from, to, width, border);
        }
    }

    const znGeom::CompactMesh& m_mesh;
    znGeom::CompactMesh m_flat;
    double m_cellsAcross;
    std::vector<std::array<int, 2>> m_borders; ///< the ends of edges
};

} // namespace

Image drawChart(const znGeom::CompactMesh& mesh, const std::string& remark, const PictureSize& size)
{
    const ChartPainter painter(mesh);
    Marking line, red;
    line.colour = border, line.lines.resize(1);
    red.colour = flipped, red.triangles.resize(1);
    const std::vector<LegendEntry> entries{
        {painter.numBorders() > 0 ? &line : nullptr, "border of the chart"},
        {painter.numFlipped() > 0 ? &red : nullptr, "turned over " + std::to_string(painter.numFlipped())},
        {nullptr, remark}};
    const int legend = std::min(legendHeight(entries, size.width), size.height / 2);
    Canvas canvas(size.width, size.height, samplesPerPixel);
    paintLegend(canvas, entries, {0, size.height - legend, size.width, size.height});
    const std::vector<Frame> frames =
        divideInPairs({panelGap, panelGap, size.width - panelGap, size.height - legend}, 2);

    Scene scene;
    scene.mesh = &mesh;
    View view = chooseViews(scene).front();
    fitToFrame(view, mesh, frames[0]);
    painter.paintMesh(canvas, view, frames[0]);
    View above(znLinear::Vector::z, znLinear::Vector::y, {0.5, 0.5, 0});
    fitToFrame(above, painter.flat(), frames[1]);
    painter.paintChart(canvas, above, view, frames[1]);
    return canvas.image();
}

} // namespace tool
