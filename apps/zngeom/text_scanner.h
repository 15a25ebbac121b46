/// `tool::TextScanner`: words and numbers of a text file.
#pragma once

#include <string>
#include <string_view>

namespace tool {

/// Reads a text word by word and knows the line that each stands on. Words are divided by blanks, tabs and line ends of
/// any kind. Every failure names the line.
class TextScanner
{
public:
    /// \param text  must outlive the scanner
    explicit TextScanner(std::string_view text, int firstLine = 1) : m_text(text), m_line(firstLine) {}

    /// From here on "#" at the beginning of a word starts a comment, which runs to the end of the line.
    void allowComments() { m_comments = true; }

    std::size_t position() const { return m_position; }
    int line() const { return m_line; }
    /// Passes over blanks and comments.
    bool atEnd();
    /// True if a word follows on this line.
    bool hasWordOnLine();

    /// The next word; fails at the end of the text.
    std::string_view word();
    /// The next word as a number. "nan" and "inf" are numbers; what is too large for a `float` is infinite.
    template <typename Real>
    Real number();
    int integer();

    /// Passes over the rest of the line.
    void skipLine();

    /// Throws `Failure` with the line in front.
    [[noreturn]] void fail(const std::string& what) const;

private:
    void skipBlanks(bool alsoLineEnds);

    std::string_view m_text;
    std::size_t m_position = 0;
    int m_line;
    bool m_comments = false;
};

} // namespace tool
