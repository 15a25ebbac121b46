/// Texts of words and numbers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "znGeom/foundation/threads/progress.h"

namespace tool {

/// The lines of a text, word by word. Blanks, tabs and commas separate words, "#" begins a comment, and a byte order
/// mark at the beginning is left out. The text has to outlive the object.
class TextLines
{
public:
    explicit TextLines(std::string_view text);

    /// Moves on to the next line, which may have no words.
    /// \return false at the end of the text
    bool next();

    const std::vector<std::string_view>& words() const { return m_words; }
    /// Where the next line begins in the text, as a number of bytes.
    std::size_t position() const { return m_position; }

    /// The line from one of its words on, with what separates the words, without a comment; empty behind the last word.
    std::string_view from(std::size_t word) const;
    /// A word as a finite number; fails for anything else, with the number of the line.
    double number(std::string_view word) const;
    /// All words as finite numbers, of which there are as many as asked for; fails with the number of the line.
    /// \param row  what a line with so many numbers is, to begin a sentence with: "a ray"
    void numbers(std::size_t count, const std::string& row, double* values) const;

    /// Fails with "line ", the number of the line counted from 1, ": " and the reason.
    [[noreturn]] void fail(const std::string& reason) const;

private:
    std::string_view m_text, m_line;
    std::vector<std::string_view> m_words;
    std::size_t m_position = 0;
    int m_number = 0;
};

/// A word in quotation marks, shortened if it is long, for a message.
std::string quoted(std::string_view word);

/// The rows of a text, each of as many finite numbers as asked for, one behind the other; empty lines are skipped.
///
/// Fails with one line that begins with the path and names the line; also for a text without rows. "-" is standard
/// input. May be cancelled.
/// \param row, rows  what a row is, and many are: "a ray", "rays"
std::vector<double> loadRows(const std::string& path, std::size_t numbersPerRow, const std::string& row,
                             const std::string& rows, znUtil::Progress& progress);

/// The same of a text in memory; a failure begins with the line.
std::vector<double> parseRows(std::string_view text, std::size_t numbersPerRow, const std::string& row,
                              const std::string& rows, znUtil::Progress& progress);

} // namespace tool
