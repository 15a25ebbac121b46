/// Running the built tool, and a folder for its files.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace toolTest {

using Json = nlohmann::json;

struct Outcome
{
    int status; ///< exit status; -n when signal n ended the process
    std::string out, err;

    /// The report of a call that should have gone well; a test failure and an empty object otherwise.
    Json json() const;
};

/// Everything that a failed expectation should show.
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

/// A running tool. Its standard output goes to a file, as does its standard error unless a terminal is given for it.
class ToolProcess
{
public:
    /// \param terminal  for standard error; -1 for a file
    /// \param input     the file that is its standard input; empty for that of the tests
    explicit ToolProcess(const std::vector<std::string>& arguments, int terminal = -1, const std::string& input = "");

    void signal(int number) const;
    Outcome wait();

private:
    pid_t m_pid = -1;
    std::FILE *m_out, *m_err;
};

/// Expects status 1, nothing on standard output and one line on standard error that contains the given words.
void expectOneLine(const Outcome& outcome, const std::vector<std::string>& words, const std::string& what);

/// \param input  the file that is its standard input; empty for that of the tests
Outcome runTool(const std::vector<std::string>& arguments, const std::string& input = "");

/// The report of a call with `--json`.
Json report(std::vector<std::string> arguments);

/// The report of `zngeom info`.
Json info(const std::string& path);

/// A folder of its own for every test; removed at the end.
class Scratch
{
public:
    Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch();

    std::string path(const std::string& name) const { return (m_folder / name).string(); }
    /// Returns the path.
    std::string write(const std::string& name, const std::string& content) const;
    std::string read(const std::string& name) const;
    /// The names of all files, ascending.
    std::vector<std::string> names() const;

private:
    std::filesystem::path m_folder;
};

/// Runs a call to its end, then interrupts it after every tenth of its time, and expects the files that it writes to be
/// the old ones or the whole new ones, and no others beside them.
///
/// \param numFiles        how many it writes; none of them may be there yet
/// \param isTwiceAtTimes  a second interrupt follows, which ends it whatever it is about
void expectOldOrNewAtCtrlC(const Scratch& scratch, const std::vector<std::string>& arguments, std::size_t numFiles,
                           bool isTwiceAtTimes);

} // namespace toolTest
