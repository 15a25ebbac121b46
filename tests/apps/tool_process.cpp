#include "tests/apps/tool_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

namespace toolTest {

namespace {

std::string contentOf(std::FILE* file)
{
    std::string content;
    std::rewind(file);
    char chunk[4096];
    while (const std::size_t count = std::fread(chunk, 1, sizeof chunk, file)) content.append(chunk, count);
    std::fclose(file);
    return content;
}

} // namespace

Json Outcome::json() const
{
    EXPECT_EQ(status, 0) << *this;
    const Json object = Json::parse(out, nullptr, false);
    EXPECT_TRUE(object.is_object()) << *this;
    return object.is_object() ? object : Json::object();
}

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    return stream << "status " << outcome.status << "\nout: " << outcome.out << "\nerr: " << outcome.err;
}

ToolProcess::ToolProcess(const std::vector<std::string>& arguments, int terminal, const std::string& input)
    : m_out(std::tmpfile()), m_err(std::tmpfile())
{
    std::vector<std::string> words{ZNGEOM_TOOL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    // The thread sanitizer would make every process with threads wait for a second at its end.
    const char* options = std::getenv("TSAN_OPTIONS");
    const std::string withoutWaiting = (options ? options : "") + std::string(" atexit_sleep_ms=0");
    m_pid = fork();
    if (m_pid < 0) throw std::runtime_error("the tool can't be started");
    if (m_pid > 0) return;
    setenv("TSAN_OPTIONS", withoutWaiting.c_str(), 1);
    if (!input.empty()) dup2(open(input.c_str(), O_RDONLY), STDIN_FILENO);
    dup2(fileno(m_out), STDOUT_FILENO);
    dup2(terminal >= 0 ? terminal : fileno(m_err), STDERR_FILENO);
    // Whoever runs the tests in the background may have set Ctrl-C to be ignored, which the tool would respect.
    for (const int number : {SIGINT, SIGTERM}) ::signal(number, SIG_DFL);
    execv(argv[0], argv.data());
    _exit(127);
}

void ToolProcess::signal(int number) const { kill(m_pid, number); }

Outcome ToolProcess::wait()
{
    int status = 0;
    waitpid(m_pid, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), contentOf(m_out), contentOf(m_err)};
}

void expectOneLine(const Outcome& outcome, const std::vector<std::string>& words, const std::string& what)
{
    EXPECT_EQ(outcome.status, 1) << what << outcome;
    EXPECT_EQ(outcome.out, "") << what;
    EXPECT_TRUE(outcome.err.starts_with("zngeom: ")) << what << outcome;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << what << outcome;
    for (const std::string& word : words)
        EXPECT_NE(outcome.err.find(word), std::string::npos) << word << what << outcome;
}

Outcome runTool(const std::vector<std::string>& arguments, const std::string& input)
{
    return ToolProcess(arguments, -1, input).wait();
}

Json report(std::vector<std::string> arguments)
{
    arguments.push_back("--json");
    return runTool(arguments).json();
}

Json info(const std::string& path) { return report({"info", path}); }

Scratch::Scratch()
{
    std::string name = (std::filesystem::temp_directory_path() / "zngeom-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no folder for the test");
    m_folder = name;
}

Scratch::~Scratch()
{
    std::error_code error;
    std::filesystem::remove_all(m_folder, error);
}

std::string Scratch::write(const std::string& name, const std::string& content) const
{
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
}

std::string Scratch::read(const std::string& name) const
{
    std::stringstream content;
    content << std::ifstream(path(name), std::ios::binary).rdbuf();
    return content.str();
}

std::vector<std::string> Scratch::names() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

void expectOldOrNewAtCtrlC(const Scratch& scratch, const std::vector<std::string>& arguments, std::size_t numFiles,
                           bool isTwiceAtTimes)
{
    const std::vector<std::string> before = scratch.names();
    const auto started = std::chrono::steady_clock::now();
    report(arguments);
    const auto time = std::chrono::steady_clock::now() - started;
    std::vector<std::pair<std::string, std::string>> files;
    for (const std::string& name : scratch.names())
        if (std::find(before.begin(), before.end(), name) == before.end()) files.emplace_back(name, scratch.read(name));
    ASSERT_EQ(files.size(), numFiles);

    constexpr int places = 10;
    for (int place = 0; place <= places; ++place) {
        for (const auto& file : files) scratch.write(file.first, "old");
        ToolProcess tool(arguments);
        std::this_thread::sleep_for(time * place / places);
        tool.signal(SIGINT);
        if (isTwiceAtTimes && place % 2 != 0) tool.signal(SIGINT);
        const Outcome outcome = tool.wait();
        std::size_t numOld = 0, numNew = 0;
        for (const auto& [name, whole] : files) {
            const std::string content = scratch.read(name);
            numOld += content == "old";
            numNew += content == whole;
        }
        // Before it listens for signals, and after it has finished with the file, the tool ends as any program does.
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 130 || outcome.status == -SIGINT) << outcome;
        EXPECT_TRUE(numOld == files.size() ? outcome.status != 0 : numNew == files.size() && outcome.status != 130)
            << place << outcome;
        EXPECT_EQ(scratch.names().size(), files.size() + before.size()) << place;
    }
}

} // namespace toolTest
