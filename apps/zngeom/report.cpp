#include "apps/zngeom/report.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace tool {

namespace {

std::string label(std::string key)
{
    std::replace(key.begin(), key.end(), '_', ' ');
    return key;
}

std::string shownValue(const Report::Value& value)
{
    if (value.is_null()) return "none";
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    if (value.is_string()) return value.get<std::string>();
    if (!value.is_array()) return value.dump();
    std::string list;
    for (const Report::Value& entry : value) {
        if (!list.empty()) list += ' ';
        list += shownValue(entry);
    }
    return list.empty() ? "none" : list;
}

} // namespace

void Report::add(const char* key, const Value& value) { add(key, value, shownValue(value)); }

void Report::add(const char* key, Value value, std::string shown)
{
    addForPrograms(key, std::move(value));
    addForPeople(label(key), std::move(shown));
}

void Report::addForPrograms(const char* key, Value value) { m_values[key] = std::move(value); }

void Report::addForPeople(std::string label, std::string shown)
{
    m_lines.emplace_back(std::move(label), std::move(shown));
}

void Report::addNote(std::string note) { m_notes.push_back(std::move(note)); }

void Report::addNotes(const std::vector<std::string>& notes)
{
    m_notes.insert(m_notes.end(), notes.begin(), notes.end());
}

std::string Report::text() const
{
    if (m_output) return *m_output;
    std::size_t width = 0;
    for (const auto& [label, shown] : m_lines) width = std::max(width, label.size());
    std::string text;
    for (const auto& [label, shown] : m_lines)
        text.append(label).append(width + 2 - label.size(), ' ').append(shown).append("\n");
    for (const std::string& note : m_notes) text += "note: " + note + '\n';
    return text;
}

std::string Report::json() const
{
    if (m_output) return *m_output;
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

Report::Value rounded(double value)
{
    constexpr int numDigits = 7;
    if (!std::isfinite(value)) return nullptr;
    char digits[32];
    const auto written = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, numDigits);
    double result = 0;
    std::from_chars(digits, written.ptr, result);
    return result;
}

std::string shownNumber(double value) { return shownValue(rounded(value)); }

} // namespace tool
