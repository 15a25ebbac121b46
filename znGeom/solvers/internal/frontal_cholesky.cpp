#include "znGeom/solvers/internal/frontal_cholesky.h"

#include <algorithm>
#include <cmath>

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

/// One column of the factor in a forward substitution.
ZNGEOM_CLONES void substitute(const double* column, std::ptrdiff_t numRows, double (&value)[3], double* x, double* y,
                              double* z)
{
    for (std::ptrdiff_t i = 0; i < numRows; ++i) {
        x[i] -= column[i] * value[0];
        y[i] -= column[i] * value[1];
        z[i] -= column[i] * value[2];
    }
}

/// The rows of a part, of three systems.
class Part
{
public:
    Part(const Dissection& dissection, const Dissection::Node& node, NVector* values)
        : m_values(values), m_places(node.numRows()), m_data(3 * node.numRows())
    {
        const std::span<const int> border = dissection.border(node);
        for (int i = 0; i < node.numOwn(); ++i) m_places[i] = node.begin + i;
        std::copy(border.begin(), border.end(), m_places.begin() + node.numOwn());
        for (int c = 0; c < 3; ++c)
            for (int i = 0; i < numRows(); ++i) column(c)[i] = values[c][m_places[i]];
    }

    int numRows() const { return m_places.size(); }
    double* column(int c) { return m_data.begin() + c * numRows(); }

    void forward(const double* panel, int numOwn)
    {
        for (int k = 0; k < numOwn; ++k, panel += numRows()) {
            double value[3];
            for (int c = 0; c < 3; ++c) value[c] = column(c)[k] /= panel[k];
            const int next = k + 1;
            substitute(panel + next, numRows() - next, value, column(0) + next, column(1) + next, column(2) + next);
        }
    }

    void backward(const double* panel, int numOwn)
    {
        panel += std::ptrdiff_t{numRows()} * numOwn;
        for (int k = numOwn - 1; k >= 0; --k) {
            panel -= numRows();
            double sums[3] = {};
            for (int i = k + 1; i < numRows(); ++i)
                for (int c = 0; c < 3; ++c) sums[c] += panel[i] * m_data[c * numRows() + i];
            for (int c = 0; c < 3; ++c) column(c)[k] = (column(c)[k] - sums[c]) / panel[k];
        }
    }

    void write(int count)
    {
        for (int c = 0; c < 3; ++c)
            for (int i = 0; i < count; ++i) m_values[c][m_places[i]] = column(c)[i];
    }

private:
    NVector* m_values;
    zn::vector<int> m_places;
    zn::vector<double> m_data;
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

bool FrontalCholesky::factorize(const znUtil::Progress& progress)
{
    for (int index = m_dissection.nodes().size() - 1; index >= 0; --index) {
        if (progress.cancelled()) return false;
        const Node& node = m_dissection.nodes()[index];
        assemble(node);
        if (!eliminate(node)) return false;
        keep(index);
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

void FrontalCholesky::solve(NVector (&columns)[3]) const
{
    const int numNodes = m_dissection.nodes().size(), size = m_matrix.size();
    NVector inOrder[3] = {NVector(size), NVector(size), NVector(size)};
    for (int c = 0; c < 3; ++c)
        for (int place = 0; place < size; ++place) inOrder[c][place] = columns[c][m_dissection.order()[place]];
    for (int index = numNodes - 1; index >= 0; --index) {
        const Node& node = m_dissection.nodes()[index];
        Part part(m_dissection, node, inOrder);
        part.forward(panelOf(index), node.numOwn());
        part.write(part.numRows());
    }
    for (int index = 0; index < numNodes; ++index) {
        const Node& node = m_dissection.nodes()[index];
        Part part(m_dissection, node, inOrder);
        part.backward(panelOf(index), node.numOwn());
        part.write(node.numOwn());
    }
    for (int c = 0; c < 3; ++c)
        for (int place = 0; place < size; ++place) columns[c][m_dissection.order()[place]] = inOrder[c][place];
}

} // namespace znGeom::internal
