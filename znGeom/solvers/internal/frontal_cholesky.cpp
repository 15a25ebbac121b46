#include "znGeom/solvers/internal/frontal_cholesky.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "znGeom/foundation/machine/clones.h"

namespace znGeom::internal {

namespace {

constexpr int blockSize = 32; ///< columns that are eliminated before the others hear of it: they fit into the cache

/// Takes products of columns off other columns of a dense matrix.
struct Columns
{
    double* data;
    std::ptrdiff_t numRows;

    double* column(int j) const { return data + j * numRows; }
    double& at(int i, int j) const { return column(j)[i]; }

    void reduceOne(int target, int first, int last) const;
    void reducePair(int target, int first, int last) const;
    void reduce(int begin, int end, int first, int last) const;
    bool eliminate(int begin, int end, const double* least) const;
};

/// In column `target`, from the diagonal down: what columns `first` to `last` take off it.
void Columns::reduceOne(int target, int first, int last) const
{
    double* const out = column(target);
    for (int k = first; k < last; ++k) {
        const double* const source = column(k);
        const double factor = source[target];
        for (std::ptrdiff_t i = target; i < numRows; ++i) out[i] -= source[i] * factor;
    }
}

/// The same for two columns side by side and four at a time, of which each number is then fetched half as often.
ZNGEOM_CLONES void reduceTwoByFour(double* __restrict a, double* __restrict b, const double* __restrict k,
                                   std::ptrdiff_t stride, std::ptrdiff_t numRows)
{
    const double *k1 = k + stride, *k2 = k1 + stride, *k3 = k2 + stride;
    const double a0 = k[0], a1 = k1[0], a2 = k2[0], a3 = k3[0], b0 = k[1], b1 = k1[1], b2 = k2[1], b3 = k3[1];
    for (std::ptrdiff_t i = 0; i < numRows; ++i) {
        a[i] -= (k[i] * a0 + k1[i] * a1) + (k2[i] * a2 + k3[i] * a3);
        b[i] -= (k[i] * b0 + k1[i] * b1) + (k2[i] * b2 + k3[i] * b3);
    }
}

void Columns::reducePair(int target, int first, int last) const
{
    int k = first;
    for (; k + 4 <= last; k += 4)
        reduceTwoByFour(column(target) + target, column(target + 1) + target, column(k) + target, numRows,
                        numRows - target);
    reduceOne(target, k, last);
    reduceOne(target + 1, k, last);
}

void Columns::reduce(int begin, int end, int first, int last) const
{
    for (; begin + 2 <= end; begin += 2) reducePair(begin, first, last);
    if (begin < end) reduceOne(begin, first, last);
}

/// A block of columns that has no more to hear from others. \return false at a pivot that is not above its bound
bool Columns::eliminate(int begin, int end, const double* least) const
{
    for (int j = begin; j < end; ++j) {
        if ((j - begin) % 2 == 0 && j + 1 < end)
            reducePair(j, begin, j);
        else
            reduceOne(j, (j - begin) % 2 == 0 ? begin : j - 1, j);
        if (!(at(j, j) > least[j])) return false;
        const double scale = 1.0 / std::sqrt(at(j, j));
        for (std::ptrdiff_t i = j; i < numRows; ++i) column(j)[i] *= scale;
    }
    return true;
}

/// Takes a multiple of one vector off another.
ZNGEOM_CLONES void subtract(const double* __restrict source, double factor, double* __restrict target,
                            std::ptrdiff_t count)
{
    for (std::ptrdiff_t i = 0; i < count; ++i) target[i] -= source[i] * factor;
}

/// In four sums, of which none waits for another.
double dotInFour(const double* a, const double* b, std::ptrdiff_t count)
{
    double sums[4] = {};
    std::ptrdiff_t i = 0;
    for (; i + 4 <= count; i += 4)
        for (int k = 0; k < 4; ++k) sums[k] += a[i + k] * b[i + k];
    for (; i < count; ++i) sums[0] += a[i] * b[i];
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

/// The rows of a part, in each of some systems.
class Part
{
public:
    Part(const Dissection& dissection, const Dissection::Node& node, std::span<NVector> systems)
        : m_systems(systems), m_places(node.numRows()), m_rows(node.numRows())
    {
        const std::span<const int> border = dissection.border(node);
        for (int i = 0; i < node.numOwn(); ++i) m_places[i] = node.begin + i;
        std::copy(border.begin(), border.end(), m_places.begin() + node.numOwn());
    }

    void forward(const double* panel, int numOwn)
    {
        for (NVector& system : m_systems) {
            read(system);
            const double* column = panel;
            for (int k = 0; k < numOwn; ++k, column += numRows()) {
                const double value = m_rows[k] /= column[k];
                subtract(column + k + 1, value, m_rows.begin() + k + 1, numRows() - k - 1);
            }
            write(system, numRows());
        }
    }

    void backward(const double* panel, int numOwn)
    {
        for (NVector& system : m_systems) {
            read(system);
            const double* column = panel + std::ptrdiff_t{numRows()} * numOwn;
            for (int k = numOwn - 1; k >= 0; --k) {
                column -= numRows();
                const double sum = dotInFour(column + k + 1, m_rows.begin() + k + 1, numRows() - k - 1);
                m_rows[k] = (m_rows[k] - sum) / column[k];
            }
            write(system, numOwn);
        }
    }

private:
    int numRows() const { return m_places.size(); }

    void read(const NVector& system)
    {
        for (int i = 0; i < numRows(); ++i) m_rows[i] = system[m_places[i]];
    }

    void write(NVector& system, int count) const
    {
        for (int i = 0; i < count; ++i) system[m_places[i]] = m_rows[i];
    }

    std::span<NVector> m_systems;
    zn::vector<int> m_places;
    zn::vector<double> m_rows;
};

} // namespace

FrontalCholesky::FrontalCholesky(const FlatRows& matrix, const Dissection& dissection)
    : m_matrix(matrix), m_dissection(dissection), m_updates(dissection.nodes().size()), m_rows(matrix.size())
{
    std::ptrdiff_t numPanels = 0, largestFront = 0;
    for (const Node& node : dissection.nodes()) {
        const std::ptrdiff_t numRows = node.numRows();
        m_panelBegins.append(numPanels);
        numPanels += numRows * node.numOwn();
        largestFront = std::max(largestFront, numRows * numRows);
    }
    m_panels = std::make_unique_for_overwrite<double[]>(static_cast<size_t>(numPanels));
    m_front = std::make_unique_for_overwrite<double[]>(static_cast<size_t>(largestFront));
}

/// In proportion to the operations.
double FrontalCholesky::workOf(const Node& node)
{
    return static_cast<double>(node.numOwn()) * node.numRows() * node.numRows();
}

bool FrontalCholesky::factorize(znUtil::Progress& progress)
{
    double work = 0, done = 0;
    for (const Node& node : m_dissection.nodes()) work += workOf(node);
    for (int index = m_dissection.nodes().size() - 1; index >= 0; --index) {
        if (progress.cancelled()) return false;
        const Node& node = m_dissection.nodes()[index];
        assemble(node);
        if (!eliminate(node)) return false;
        keep(index);
        progress.set((done += workOf(node)) / work);
    }
    return true;
}

/// Makes the front of a part.
void FrontalCholesky::assemble(const Node& node)
{
    const std::ptrdiff_t numRows = node.numRows();
    std::fill_n(m_front.get(), numRows * numRows, 0.0);
    int row = 0;
    for (int place = node.begin; place < node.end; ++place) m_rows[place] = row++;
    for (const int place : m_dissection.border(node)) m_rows[place] = row++;
    m_diagonal.setSize(node.numOwn());
    for (int place = node.begin; place < node.end; ++place) {
        const int unknown = m_dissection.order()[place];
        double* const column = m_front.get() + m_rows[place] * numRows;
        for (const SparseElement& element : m_matrix.row(unknown)) {
            const int other = m_dissection.places()[element.index];
            if (other >= place) column[m_rows[other]] += element.value;
            if (other == place) m_diagonal[m_rows[place]] = 1e-12 * element.value;
        }
    }
    for (const int half : node.halves)
        if (half >= 0) addUpdate(node, half);
}

void FrontalCholesky::addUpdate(const Node& node, int half)
{
    const std::span<const int> border = m_dissection.border(m_dissection.nodes()[half]);
    const double* column = m_updates[half].get();
    for (size_t j = 0; j < border.size(); ++j, column += border.size()) {
        double* const out = m_front.get() + std::ptrdiff_t{m_rows[border[j]]} * node.numRows();
        for (size_t i = j; i < border.size(); ++i) out[m_rows[border[i]]] += column[i];
    }
    m_updates[half].reset();
}

bool FrontalCholesky::eliminate(const Node& node)
{
    const Columns front{m_front.get(), node.numRows()};
    for (int begin = 0; begin < node.numOwn(); begin += blockSize) {
        const int end = std::min(begin + blockSize, node.numOwn());
        if (!front.eliminate(begin, end, m_diagonal.begin())) return false;
        front.reduce(end, node.numRows(), begin, end);
    }
    return true;
}

/// Takes from the front what is finished, and what the part above needs.
void FrontalCholesky::keep(int index)
{
    const Node& node = m_dissection.nodes()[index];
    const std::ptrdiff_t numRows = node.numRows(), numOwn = node.numOwn(), numBorder = numRows - numOwn;
    std::copy_n(m_front.get(), numRows * numOwn, m_panels.get() + m_panelBegins[index]);
    m_updates[index] = std::make_unique_for_overwrite<double[]>(static_cast<size_t>(numBorder * numBorder));
    for (std::ptrdiff_t j = 0; j < numBorder; ++j)
        std::copy_n(m_front.get() + (numOwn + j) * numRows + numOwn + j, numBorder - j,
                    m_updates[index].get() + j * numBorder + j);
}

void FrontalCholesky::solve(std::span<NVector> systems) const
{
    const zn::vector<int>& order = m_dissection.order();
    std::vector<NVector> inOrder(systems.begin(), systems.end());
    for (size_t c = 0; c < systems.size(); ++c)
        for (int place = 0; place < order.size(); ++place) inOrder[c][place] = systems[c][order[place]];
    for (int index = m_dissection.nodes().size() - 1; index >= 0; --index) {
        const Node& node = m_dissection.nodes()[index];
        Part(m_dissection, node, inOrder).forward(panelOf(index), node.numOwn());
    }
    for (int index = 0; index < m_dissection.nodes().size(); ++index) {
        const Node& node = m_dissection.nodes()[index];
        Part(m_dissection, node, inOrder).backward(panelOf(index), node.numOwn());
    }
    for (size_t c = 0; c < systems.size(); ++c)
        for (int place = 0; place < order.size(); ++place) systems[c][order[place]] = inOrder[c][place];
}

} // namespace znGeom::internal
