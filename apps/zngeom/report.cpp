#include "apps/zngeom/report.h"

#include <algorithm>
#include <charconv>

namespace tool {

namespace {

std::string label(std::string key)
{
    std::replace(key.begin(), key.end(), '_', ' ');
    return key;
}

std::string shown(const Report::Value& value)
{
    if (value.is_null()) return "none";
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    if (value.is_string()) return value.get<std::string>();
    if (!value.is_array()) return value.dump();
    std::string list;
    for (const Report::Value& entry : value) {
        if (!list.empty()) list += ' ';
        list += shown(entry);
    }
    return list.empty() ? "none" : list;
}

} // namespace

void Report::add(const char* key, Value value) { m_values[key] = std::move(value); }

void Report::addNote(std::string note) { m_notes.push_back(std::move(note)); }

void Report::addNotes(const std::vector<std::string>& notes)
{
    m_notes.insert(m_notes.end(), notes.begin(), notes.end());
}

std::string Report::text() const
{
    std::size_t width = 0;
    for (const auto& [key, value] : m_values.items()) width = std::max(width, key.size());
    std::string text;
    for (const auto& [key, value] : m_values.items()) {
        const std::string name = label(key);
        text += name + std::string(width + 2 - name.size(), ' ') + shown(value) + '\n';
    }
    for (const std::string& note : m_notes) text += "note: " + note + '\n';
    return text;
}

std::string Report::json() const
{
    Value values = m_values;
    values["notes"] = m_notes;
    // File names may hold any bytes.
    return values.dump(-1, ' ', false, Value::error_handler_t::replace) + '\n';
}

double shortest(float value)
{
    char digits[32];
    const auto written = std::to_chars(digits, digits + sizeof digits, value);
    double result = 0;
    std::from_chars(digits, written.ptr, result);
    return result;
}

} // namespace tool
