#include "znGeom/foundation/output/app_output.h"

namespace znOS {

AppOutput& AppOutput::getInstance()
{
    // Never destroyed: threads of the host may still write while the process ends.
    static AppOutput& instance = *new AppOutput;
    return instance;
}

void AppOutput::info(const char* format, ...)
{
    if (!m_info.isSet()) return;
    std::va_list arguments;
    va_start(arguments, format);
    m_info.write(format, arguments);
    va_end(arguments);
}

void AppOutput::error(const char* format, ...)
{
    if (!m_error.isSet()) return;
    std::va_list arguments;
    va_start(arguments, format);
    m_error.write(format, arguments);
    va_end(arguments);
}

} // namespace znOS
