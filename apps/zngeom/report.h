/// `tool::Report`: what a command has to say.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tool {

/// Named values in order, for people as aligned lines and for programs as one JSON object, and notes: sentences about
/// what was left out.
class Report
{
public:
    using Value = nlohmann::ordered_json;

    /// \param key  small letters and underscores; people see blanks for these
    void add(const char* key, Value value);
    void addNote(std::string note);
    void addNotes(const std::vector<std::string>& notes);

    /// Ends in a line end. Notes follow the values.
    std::string text() const;
    /// One line with all values, and with the notes under "notes".
    std::string json() const;

private:
    Value m_values = Value::object();
    std::vector<std::string> m_notes;
};

/// The same number in as many decimal digits as a `float` needs: 0.1 and not 0.10000000149.
double shortest(float value);

} // namespace tool
