// Matrices as text.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <ostream>
#include <string_view>

#include "znGeom/solvers/sparse_matrix.h"

namespace znGeom {

namespace {

/// Ten decimals, with a point in every locale.
class Decimal
{
public:
    explicit Decimal(double value)
    {
        m_end = std::to_chars(m_text, m_text + sizeof(m_text), value, std::chars_format::fixed, 10).ptr;
    }
    std::string_view text() const { return {m_text, static_cast<std::size_t>(m_end - m_text)}; }

private:
    char m_text[336]; // a sign, up to 309 digits, a point, ten decimals
    char* m_end;
};

/// Writes all entries of a row into `line`, which has a place for each column.
void spread(const zn::vector<SparseElement>& row, NVector& line)
{
    std::fill_n(line.data(), line.size(), 0.0);
    for (const SparseElement& element : row) line[element.index] = element.value;
}

void append(znString::CString& text, std::string_view more) { text.append(more.data(), static_cast<int>(more.size())); }

} // namespace

std::ostream& operator<<(std::ostream& stream, const SparseMatrix& matrix)
{
    const int n = matrix.size();
    NVector line(n);
    stream << "SparseMatrix{";
    for (int i = 0; i < n; ++i) {
        stream << std::endl;
        spread(matrix.row(i), line);
        for (int j = 0; j < n; ++j) stream << (line[j] < 0 ? " " : "  ") << Decimal(line[j]).text();
    }
    return stream << "\n}";
}

znString::CString SparseMatrix::toMmaString() const
{
    const int n = size();
    NVector line(n);
    znString::CString text("{\n");
    for (int i = 0; i < n; ++i) {
        spread(m_rows[i], line);
        for (int j = 0; j < n; ++j) {
            append(text, j == 0 ? "{" : ",");
            append(text, Decimal(line[j]).text());
        }
        append(text, i + 1 < n ? "},\n" : "}\n");
    }
    append(text, "}");
    return text;
}

void SparseMatrix::dumpRowLengths() const
{
    int longest = 0;
    for (const auto& row : m_rows) longest = std::max(longest, row.size());
    zn::vector<int> counts(longest + 1);
    for (const auto& row : m_rows) ++counts[row.size()];

    std::printf("  total rows: %d", size());
    for (int length = 0; length <= longest; ++length)
        if (counts[length] > 0) std::printf("  length %d: %d rows", length, counts[length]);
}

} // namespace znGeom
