/// `znGeom::internal::TextScanner`: words and numbers of a text file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "znGeom/files/internal/load_context.h"
#include "znGeom/foundation/containers/vector.h"

namespace znGeom::internal {

/// Reads a text word by word and knows which line each is on. Words are separated by blanks, tabs and line ends of any
/// kind. Every failure names the line.
class TextScanner
{
public:
    explicit TextScanner(LoadContext& context) : m_context(context), m_at(context.text().begin()) {}

    /// From here on "#" at the beginning of a word starts a comment, which runs to the end of the line.
    void allowComments() { m_comments = true; }
    /// From here on commas count as blanks.
    void allowCommas() { m_commas = true; }

    /// Skips blanks, line ends and comments; true at the end of the text, and after a failure.
    bool atEnd() { return !seek(); }
    /// True if a word follows on this line.
    bool hasWordOnLine();

    /// The next word, valid until the next call; fails at the end of the text.
    bool readWord(std::string_view& word);
    /// The next word as a number. "nan" and "inf" are numbers; what is too large is infinite.
    bool read(float& value);
    bool read(int& value);
    /// A count of at least one, and that many whole numbers: the corners of a face.
    bool readCounted(zn::vector<int>& numbers);
    bool readThree(float* values) { return read(values[0]) && read(values[1]) && read(values[2]); }

    /// Skips the rest of the line, but not its end.
    void skipLine();
    /// Skips a line end if there is one here.
    void skipLineEnd();

    /// Fails, with the line number before the message.
    bool fail(const std::string& what);

    /// Where bytes follow that are not text.
    const char* at() const { return m_at; }

private:
    bool isSeparator(char c) const;
    void skipBlanks();
    bool seek();
    bool failForWord(const char* begin, const char* what);

    LoadContext& m_context;
    const char* m_at; ///< within a block, or at its end
    std::int64_t m_line = 1;
    bool m_comments = false, m_commas = false;
};

} // namespace znGeom::internal
