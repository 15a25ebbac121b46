/// `tool::Report`: what a command has to say.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tool {

/// Named values in order, for people as aligned lines and for programs as one JSON object, and notes: sentences about
/// what was left out. Names of files and whatever else comes from them are shown without control characters.
///
/// A report may consist of others, one for each of several files: for people with empty lines between them, for
/// programs as a JSON array.
class Report
{
public:
    using Value = nlohmann::ordered_json;
    enum class Notes { Shown, Hidden };
    enum class Status { Done, Broken };

    /// \param key  lower-case letters and underscores; people see the underscores as blanks
    void add(const char* key, const Value& value);
    /// \param shown  what people see instead of the value
    void add(const char* key, Value value, std::string shown);
    void addForPrograms(const char* key, Value value);
    void addForPeople(std::string label, std::string shown);
    void addNote(std::string note);
    void addNotes(const std::vector<std::string>& notes);

    void addPart(Report part) { m_parts.push_back(std::move(part)); }
    /// In place of a part that could not be made: programs see an object with the file's name and the reason.
    /// \param message  one line for the user, which the caller of the command shows as an error
    void addFailedPart(const std::string& file, const std::string& message);
    /// The lines of the parts that failed.
    const std::vector<std::string>& failures() const { return m_failures; }

    /// Prints this text and nothing else, for people and for programs: the result of a command that has one.
    void setOutput(std::string text) { m_output = std::move(text); }

    /// Whether the command did its work but found, or left, a mesh that something is wrong with.
    void setStatus(Status status) { m_status = status; }
    Status getStatus() const { return m_status; }

    /// When the output of the command goes to standard output, the report goes to standard error.
    void makeRoomFor(const std::string& output) { m_isAside = output == "-"; }
    bool isAside() const { return m_isAside; }

    /// Ends with a line end. Notes follow the values.
    std::string text(Notes notes) const;
    /// One line with all values, and with the notes under "notes".
    std::string json() const;

private:
    Value jsonValue() const;

    Value m_values = Value::object();
    std::vector<std::pair<std::string, std::string>> m_lines; ///< label and text
    std::optional<std::string> m_output;
    std::vector<std::string> m_notes;
    std::vector<Report> m_parts;
    std::vector<std::string> m_failures;
    bool m_isAside = false;
    Status m_status = Status::Done;
};

/// The same text with a question mark for each control character, which might move the cursor or colour what follows.
std::string withoutControls(std::string text);

/// The same number in as many decimal digits as a `float` needs: 0.1 and not 0.10000000149.
double shortest(float value);

/// As many decimal digits as are meaningful in numbers computed from `float` positions.
Report::Value rounded(double value);
/// What people see of a number: 8.0, or "none" for what is not finite.
std::string shownNumber(double value);

} // namespace tool
