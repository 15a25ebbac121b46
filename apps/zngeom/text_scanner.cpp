#include "apps/zngeom/text_scanner.h"

#include <charconv>
#include <cstdlib>

#include "apps/zngeom/failure.h"

namespace tool {

namespace {

bool isLineEnd(char c) { return c == '\n' || c == '\r'; }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f'; }

/// How a word of the file is shown: junk can be long.
std::string quoted(std::string_view word)
{
    constexpr std::size_t shown = 24;
    return '"' + std::string(word.substr(0, shown)) + (word.size() > shown ? "...\"" : "\"");
}

/// What the parser calls out of range is an infinity or nearly zero, and `strto` knows which.
void parseExtreme(const std::string& word, float& value) { value = std::strtof(word.c_str(), nullptr); }
void parseExtreme(const std::string& word, double& value) { value = std::strtod(word.c_str(), nullptr); }

/// The parser takes no plus sign in front.
std::string_view withoutPlus(std::string_view word) { return word.starts_with('+') ? word.substr(1) : word; }

} // namespace

void TextScanner::skipBlanks(bool alsoLineEnds)
{
    for (; m_position < m_text.size(); ++m_position) {
        const char c = m_text[m_position];
        if (c == '#' && m_comments) {
            skipLine();
            --m_position;
        } else if (isLineEnd(c)) {
            if (!alsoLineEnds) return;
            const bool half = c == '\r' && m_position + 1 < m_text.size() && m_text[m_position + 1] == '\n';
            m_line += half ? 0 : 1;
        } else if (!isBlank(c)) {
            return;
        }
    }
}

bool TextScanner::atEnd()
{
    skipBlanks(true);
    return m_position == m_text.size();
}

bool TextScanner::hasWordOnLine()
{
    skipBlanks(false);
    return m_position < m_text.size() && !isLineEnd(m_text[m_position]);
}

std::string_view TextScanner::word()
{
    if (atEnd()) fail("the file ends too soon");
    const std::size_t begin = m_position;
    while (m_position < m_text.size() && !isBlank(m_text[m_position]) && !isLineEnd(m_text[m_position])) ++m_position;
    return m_text.substr(begin, m_position - begin);
}

template <typename Real>
Real TextScanner::number()
{
    const std::string_view found = word(), digits = withoutPlus(found);
    Real value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::invalid_argument || end != digits.data() + digits.size())
        fail(quoted(found) + " is not a number");
    if (error == std::errc::result_out_of_range) parseExtreme(std::string(digits), value);
    return value;
}

template float TextScanner::number<float>();
template double TextScanner::number<double>();

int TextScanner::integer()
{
    const std::string_view found = word(), digits = withoutPlus(found);
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size())
        fail(quoted(found) + " is not a whole number that can stand here");
    return value;
}

void TextScanner::skipLine()
{
    m_position = m_text.find_first_of("\r\n", m_position);
    if (m_position == std::string_view::npos) m_position = m_text.size();
}

void TextScanner::fail(const std::string& what) const { throw Failure("line " + std::to_string(m_line) + ": " + what); }

} // namespace tool
