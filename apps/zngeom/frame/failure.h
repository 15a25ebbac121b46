/// How the tool's parts end a command early. `main` turns each into one line and an exit status.
#pragma once

#include <stdexcept>

namespace tool {

/// Something that the user has to know, in one line without a line end.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The user asked to stop.
class Cancelled : public std::exception
{};

} // namespace tool
