/// zngeom: a look at what the library does, and a tool for meshes in files.

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/progress_bar.h"
#include "apps/zngeom/frame/usage.h"
#include "znGeom/foundation/output/app_output.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/version.h"

namespace tool {

namespace {

enum ExitStatus { Success = 0, Failed = 1, WrongUsage = 2, Broken = 2, Signalled = 128 };

struct OutputOptions
{
    bool json = false;
    bool verbose = false;
    bool quiet = false;
};

std::string formatsForHelp()
{
    std::string text =
        "Meshes are read and written by the extension of the file's name; - is standard input and output:\n";
    for (const FileFormat& format : fileFormats()) {
        std::string extensions;
        for (const std::string& extension : format.extensions) extensions += extension + " ";
        extensions.resize(std::max<std::size_t>(extensions.size(), 20), ' ');
        text += "  " + extensions + format.name + ": " + format.remark + "\n";
    }
    return text;
}

const char* const footer = R"(
What a file has and the tool doesn't keep (colours, normals of face corners, ...) is told in notes.
An output file is written under another name and put in place when it is complete: a failure
and Ctrl-C leave what was there.

         {}) {

Examples:
  zngeom info bunny.obj
  zngeom info --json scan.ply other.ply
  zngeom weld soup.stl welded.obj
  zngeom convert model.glb model.off
  zngeom split parts.obj part.obj
  zngeom extract scan.ply rim.ply --boundary 1 --rings 3
  zngeom closest scan.ply points.txt -o distances.txt
  zngeom ray scan.ply rays.txt --any
  zngeom inside part.stl points.txt
  zngeom curvature scan.ply bends.ply --type gauss
  zngeom distance scan.ply small.ply --signed --picture heat.png
  zngeom check scan.ply --picture defects.png
  zngeom repair scan.ply whole.ply --self-intersections
  zngeom fill scan.ply closed.ply --max-length 100
  zngeom stitch pieces.obj whole.obj --tolerance 0.1%
  zngeom flatten scan.ply flat.obj --picture chart.png
  zngeom pack flat.obj atlas.obj --turn --margin 0.004 --svg atlas.svg
  zngeom reduce scan.ply small.ply --to 0.1
  zngeom intersect part.obj other.obj lines.obj
  zngeom section part.obj lines.obj --plane 0,0,1,2.5
  zngeom project part.obj sketch.obj lines.obj
  zngeom cut part.obj apart.obj --along lines.obj
  zngeom collar part.obj strip.obj --loop 1 --width 2
  zngeom subdivide cage.obj smooth.obj --levels 3
  zngeom extrude sheet.obj plate.obj --all --distance 2
  zngeom hull part.obj outline.svg --along x
  zngeom bounds lines.obj --minimal --margin 0.5
  zngeom stroke pen.txt dabs.svg --spacing 8 --smooth
  zngeom curve table.txt curve.svg --method spline)";

/// Whatever a file or a path holds, a message is one line.
void printError(const std::string& message) { std::fprintf(stderr, "zngeom: %s\n", withoutControls(message).c_str()); }

int printReport(const Report& report, const OutputOptions& options)
{
    const Report::Notes notes = options.quiet ? Report::Notes::Hidden : Report::Notes::Shown;
    const std::string text = options.json ? report.json() : report.text(notes);
    std::fputs(text.c_str(), report.isAside() ? stderr : stdout);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        printError("standard output can't be written");
        return Failed;
    }
    for (const std::string& failure : report.failures()) printError(failure);
    if (!report.failures().empty()) return Failed;
    return report.getStatus() == Report::Status::Broken ? Broken : Success;
}

/// While it lives, the library's channels go to standard error.
class VerboseOutput
{
public:
    explicit VerboseOutput(ProgressBar& bar)
    {
        const auto print = [&bar](const std::string& text) {
            bar.erase();
            std::fputs(text.c_str(), stderr);
        };
        znGeom::debugChannel().setSink(print);
        znOS::AppOutput::getInstance().setInfoSink(print);
        znOS::AppOutput::getInstance().setErrorSink(print);
    }
    ~VerboseOutput()
    {
        znGeom::debugChannel().setSink({});
        znOS::AppOutput::getInstance().setInfoSink({});
        znOS::AppOutput::getInstance().setErrorSink({});
    }
    VerboseOutput(const VerboseOutput&) = delete;
    VerboseOutput& operator=(const VerboseOutput&) = delete;
};

Report runWatched(Command& command, const OutputOptions& options)
{
    znUtil::Progress progress;
    const CancelOnSignal cancelOnSignal(progress);
    ProgressBar bar(progress, options.quiet);
    std::optional<VerboseOutput> output;
    if (options.verbose) output.emplace(bar);
    return command.run(progress);
}

int runCommand(Command& command, const OutputOptions& options)
try {
    return printReport(runWatched(command, options), options);
} catch (const Cancelled&) {
    printError("cancelled");
    return Signalled + CancelOnSignal::caught();
} catch (const std::bad_alloc&) {
    printError("not enough memory");
    return Failed;
} catch (const std::exception& problem) {
    printError(problem.what());
    return Failed;
}

using Commands = std::vector<std::pair<std::unique_ptr<Command>, CLI::App*>>;

Commands addCommands(CLI::App& app, OutputOptions& options)
{
    Commands commands;
    for (auto make :
         {makeInfoCommand,     makeWeldCommand,      makeConvertCommand, makeSplitCommand,     makeExtractCommand,
          makeClosestCommand,  makeRayCommand,       makeInsideCommand,  makeCurvatureCommand, makeDistanceCommand,
          makeCheckCommand,    makeRepairCommand,    makeFillCommand,    makeFlattenCommand,   makePackCommand,
          makeReduceCommand,   makeIntersectCommand, makeSectionCommand, makeProjectCommand,   makeCutCommand,
          makeCollarCommand,   makeSubdivideCommand, makeExtrudeCommand, makeOffsetCommand,    makeShellCommand,
          makeStitchCommand,   makeHullCommand,      makeBoundsCommand,  makeStrokeCommand,    makeCurveCommand,
          makePolylineCommand, makeOverlapCommand}) {
        std::unique_ptr<Command> command = make();
        CLI::App* sub = command->addTo(app)->group("Commands");
        sub->add_flag("--json", options.json, "Print the report as JSON");
        sub->add_flag("-v,--verbose", options.verbose, "Show what the library does and how long it takes");
        sub->add_flag("-q,--quiet", options.quiet, "Show no progress and no notes; errors are still told");
        commands.emplace_back(std::move(command), sub);
    }
    app.add_subcommand("help", "Tell about a command: zngeom help COMMAND")->group("Commands");
    return commands;
}

/// The parser's words, and where to find more.
std::string describeWrongUsage(const CLI::App* app, const CLI::Error& problem)
{
    const auto parsed = app->get_subcommands();
    const bool lacksCommand = parsed.empty() && problem.get_name() == "RequiredError";
    const std::string command = "zngeom" + (parsed.empty() ? "" : " " + parsed.front()->get_name());
    return command + ": " + (lacksCommand ? "a command is required" : withoutControls(problem.what())) + "\nRun " +
           command + " --help for more information.\n";
}

std::vector<std::string> commandNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* sub : app.get_subcommands({})) names.push_back(sub->get_name());
    return names;
}

/// Whether the first word is where a command is expected, and is not one.
bool isUnknownCommand(const std::vector<std::string>& arguments, const std::vector<std::string>& names)
{
    if (arguments.empty() || arguments.front().starts_with('-')) return false;
    return std::find(names.begin(), names.end(), arguments.front()) == names.end();
}

int refuseCommand(const std::string& word, const std::vector<std::string>& names)
{
    const std::string nearest = nearestWord(word, names);
    printError("unknown command " + word + (nearest.empty() ? "" : "; did you mean " + nearest + "?"));
    std::fputs("Run zngeom --help for a list of the commands.\n", stderr);
    return WrongUsage;
}

/// `help COMMAND` is `COMMAND --help`.
std::vector<std::string> withHelpAsOption(std::vector<std::string> arguments)
{
    if (arguments.empty() || arguments.front() != "help") return arguments;
    arguments.erase(arguments.begin());
    arguments.push_back("--help");
    return arguments;
}

int runTool(std::vector<std::string> arguments)
{
    CLI::App app(
        "zngeom looks at triangle and polygon meshes in files, measures them, repairs them, and takes them apart.\n\n" +
            formatsForHelp(),
        "zngeom");
    for (const auto& [word, ours] : {std::pair{"SUBCOMMAND", "COMMAND"}, {"TEXT", "FILE"}, {"REQUIRED", ""}})
        app.get_formatter()->label(word, ours);
    app.set_version_flag("-V,--version", "zngeom " ZNGEOM_VERSION);
    app.require_subcommand(1);
    app.footer(footer);
    app.failure_message(describeWrongUsage);
    OutputOptions options;
    const Commands commands = addCommands(app, options);

    arguments = withHelpAsOption(std::move(arguments));
    if (const auto names = commandNames(app); isUnknownCommand(arguments, names))
        return refuseCommand(arguments.front(), names);
    try {
        std::reverse(arguments.begin(), arguments.end()); // the order in which the parser takes them
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& problem) {
        return app.exit(problem) == 0 ? Success : WrongUsage;
    }
    for (const auto& [command, sub] : commands)
        if (sub->parsed()) return runCommand(*command, options);
    return WrongUsage;
}

} // namespace

} // namespace tool

int main(int argc, char** argv)
{
    // A file that grows past the limit of its user is a failed write, not the end of the process.
    std::signal(SIGXFSZ, SIG_IGN);
    return tool::runTool({argv + std::min(argc, 1), argv + argc});
}
