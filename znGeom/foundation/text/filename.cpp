#include "znGeom/foundation/text/filename.h"

#include <string_view>

namespace znOS {

using znString::CString;
using znString::Encoding;
using znString::IString;

namespace {

constexpr char separator = '/';

int baseBegin(const CString& path)
{
    const size_t at = std::string_view(path.asChar()).rfind(separator);
    return at == std::string_view::npos ? 0 : static_cast<int>(at) + 1;
}

} // namespace

IString Filename::dirname() const { return m_path.part(0, baseBegin(m_path.asMultibyte(Encoding::Native))); }

IString Filename::basename() const
{
    const CString path = m_path.asMultibyte(Encoding::Native);
    return m_path.part(baseBegin(path), path.length());
}

IString Filename::baseTrunk() const
{
    const IString base = basename();
    const CString text = base.asMultibyte(Encoding::Native);
    const std::string_view name = text.asChar();
    const size_t dot = name.rfind('.');
    const bool hasExtension = dot != name.npos && name.find_first_not_of('.') < dot;
    return base.part(0, hasExtension ? static_cast<int>(dot) : text.length());
}

} // namespace znOS
