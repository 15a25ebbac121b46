#include "znGeom/files/internal/text_scanner.h"

#include "znGeom/files/internal/decimal.h"
#include "znGeom/files/internal/number_reader.h"

namespace znGeom::internal {

namespace {

bool isLineEnd(char c) { return c == '\n' || c == '\r'; }

} // namespace

bool TextScanner::isSeparator(char c) const { return isSpace(c) || (m_commas && c == ','); }

/// Within the line: a block ends with a line end.
void TextScanner::skipBlanks()
{
    if (m_at == m_context.text().end()) return;
    while (!isLineEnd(*m_at) && isSeparator(*m_at)) ++m_at;
    if (*m_at == '#' && m_comments) skipLine();
}

/// Moves to the next word; false when there is none.
bool TextScanner::seek()
{
    while (!m_context.hasFailed()) {
        skipBlanks();
        if (m_at != m_context.text().end()) {
            if (!isLineEnd(*m_at)) return true;
            skipLineEnd();
        } else {
            if (!m_context.nextBlock()) return false;
            m_at = m_context.text().begin();
        }
    }
    return false;
}

bool TextScanner::hasWordOnLine()
{
    skipBlanks();
    return m_at != m_context.text().end() && !isLineEnd(*m_at);
}

bool TextScanner::readWord(std::string_view& word)
{
    if (!seek()) return fail("the file ends too soon");
    const char* const begin = m_at;
    while (!isSeparator(*m_at)) ++m_at;
    word = {begin, static_cast<size_t>(m_at - begin)};
    return true;
}

bool TextScanner::read(float& value)
{
    if (!seek()) return fail("the file ends too soon");
    const char* const begin = m_at;
    const bool isNumber = scanFloat(m_at, value) != Scan::None || scanWord(m_at = begin, value);
    return (isNumber && isSeparator(*m_at)) || failForWord(begin, " is not a number");
}

bool TextScanner::read(int& value)
{
    if (!seek()) return fail("the file ends too soon");
    const char* const begin = m_at;
    const bool isNumber = scanInt(m_at, value) == Scan::Number && isSeparator(*m_at);
    return isNumber || failForWord(begin, " is not a whole number that can stand here");
}

bool TextScanner::readCounted(zn::vector<int>& numbers)
{
    int count = 0, number = 0;
    if (!read(count)) return false;
    if (count < 1) return fail("a face has " + std::to_string(count) + " corners");
    numbers.clear();
    for (int i = 0; i < count; ++i) {
        if (!read(number)) return false;
        numbers.append(number);
    }
    return true;
}

bool TextScanner::failForWord(const char* begin, const char* what)
{
    std::string_view word;
    m_at = begin;
    readWord(word);
    return fail(quoted(word) + what);
}

void TextScanner::skipLine()
{
    if (m_at == m_context.text().end()) return;
    while (!isLineEnd(*m_at)) ++m_at;
}

/// A carriage return and a line feed are one line end, and both are in one block.
void TextScanner::skipLineEnd()
{
    if (m_at == m_context.text().end()) return;
    if (m_at[0] == '\r' && m_at + 1 != m_context.text().end() && m_at[1] == '\n') ++m_at;
    ++m_at;
    ++m_line;
}

bool TextScanner::fail(const std::string& what)
{
    return m_context.malformed("line " + std::to_string(m_line) + ": " + what);
}

} // namespace znGeom::internal
