#include "apps/zngeom/frame/report.h"

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

void Report::addFailedPart(const std::string& file, const std::string& message)
{
    Report part;
    part.addForPrograms("file", file);
    part.addForPrograms("error", message);
    addPart(std::move(part));
    m_failures.push_back(message);
}

std::string Report::text(Notes notes) const
{
    if (m_output) return *m_output;
    std::string text;
    for (const Report& part : m_parts) {
        const std::string ofPart = part.text(notes);
        if (!text.empty() && !ofPart.empty()) text += '\n';
        text += ofPart;
    }
    std::size_t width = 0;
    for (const auto& [label, shown] : m_lines) width = std::max(width, label.size());
    for (const auto& [label, shown] : m_lines)
        text.append(label).append(width + 2 - label.size(), ' ').append(withoutControls(shown)).append("\n");
    if (notes == Notes::Shown)
        for (const std::string& note : m_notes) text += "note: " + withoutControls(note) + '\n';
    return text;
}

std::string Report::json() const
{
    if (m_output) return *m_output;
    Value value = Value::array();
    for (const Report& part : m_parts) value.push_back(part.jsonValue());
    if (m_parts.empty()) value = jsonValue();
    // File names may hold any bytes.
    return value.dump(-1, ' ', false, Value::error_handler_t::replace) + '\n';
}

Report::Value Report::jsonValue() const
{
    Value values = m_values;
    values["notes"] = m_notes;
    return values;
}

std::string withoutControls(std::string text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        // Those from 128 on take two bytes in UTF-8, of which the first is C2.
        const bool isSecond = byte >= 0x80 && byte < 0xA0 && i > 0 && text[i - 1] == '\xC2';
        if (isSecond) text.erase(--i, 1);
        if (byte < ' ' || byte == 127 || isSecond) text[i] = '?';
    }
    return text;
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
