#include "apps/zngeom/files/text_lines.h"

#include <algorithm>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/read_file.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"

namespace tool {

namespace {

constexpr std::string_view separators = " \t,\r";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::string spelled(std::size_t count)
{
    constexpr const char* words[] = {"no", "one", "two", "three", "four", "five", "six"};
    return count < std::size(words) ? words[count] : std::to_string(count);
}

} // namespace

TextLines::TextLines(std::string_view text) : m_text(text)
{
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark) m_position = byteOrderMark.size();
}

bool TextLines::next()
{
    m_words.clear();
    m_line = {};
    if (m_position >= m_text.size()) return false;
    ++m_number;
    const std::size_t end = std::min(m_text.find('\n', m_position), m_text.size());
    m_line = m_text.substr(m_position, end - m_position);
    m_line = m_line.substr(0, m_line.find('#'));
    m_position = end + 1;
    for (std::size_t at = 0; (at = m_line.find_first_not_of(separators, at)) < m_line.size();) {
        const std::size_t stop = std::min(m_line.find_first_of(separators, at), m_line.size());
        m_words.push_back(m_line.substr(at, stop - at));
        at = stop;
    }
    return true;
}

std::string_view TextLines::from(std::size_t word) const
{
    if (word >= m_words.size()) return {};
    const char* begin = m_words[word].data();
    const char* end = m_words.back().data() + m_words.back().size();
    return {begin, static_cast<std::size_t>(end - begin)};
}

double TextLines::number(std::string_view word) const
{
    const std::optional<double> value = finiteNumber(word);
    if (!value) fail(quoted(word) + " is not a finite number");
    return *value;
}

void TextLines::numbers(std::size_t count, const std::string& row, double* values) const
{
    for (std::size_t i = 0; i < std::min(m_words.size(), count); ++i) values[i] = number(m_words[i]);
    if (m_words.size() != count)
        fail(row + " has " + (m_words.size() < count ? "fewer" : "more") + " than " + spelled(count) + " numbers");
}

void TextLines::fail(const std::string& reason) const
{
    throw Failure("line " + std::to_string(m_number) + ": " + reason);
}

std::string quoted(std::string_view word)
{
    constexpr std::size_t most = 24;
    return "\"" + std::string(word.substr(0, most)) + (word.size() > most ? "...\"" : "\"");
}

std::vector<double> parseRows(std::string_view text, std::size_t numbersPerRow, const std::string& row,
                              const std::string& rows, znUtil::Progress& progress)
{
    std::vector<double> values;
    TextLines lines(text);
    Pacer pacer(progress, text.size());
    while (lines.next()) {
        pacer.at(lines.position());
        if (lines.words().empty()) continue;
        values.resize(values.size() + numbersPerRow);
        lines.numbers(numbersPerRow, row, &values[values.size() - numbersPerRow]);
    }
    if (values.empty()) throw Failure("has no " + rows);
    return values;
}

std::vector<double> loadRows(const std::string& path, std::size_t numbersPerRow, const std::string& row,
                             const std::string& rows, znUtil::Progress& progress)
try {
    progress.setCaption("reading");
    return parseRows(readFile(path, progress), numbersPerRow, row, rows, progress);
} catch (const Failure& failure) {
    throw Failure(inputName(path) + ": " + failure.what());
}

} // namespace tool
