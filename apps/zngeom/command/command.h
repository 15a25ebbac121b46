/// The commands of the tool. A new one is a class in a file of its own, a function that makes it, and a line in `main`.
#pragma once

#include <CLI/App.hpp>
#include <memory>

#include "apps/zngeom/frame/report.h"
#include "znGeom/foundation/threads/progress.h"

namespace tool {

class Command
{
public:
    virtual ~Command() = default;

    /// Adds the command to the command line, with its arguments, which the parser fills in.
    virtual CLI::App* addTo(CLI::App& app) = 0;

    /// Does the work with the arguments of the parsed command line. Throws `Failure` with one line for the user, and
    /// `Cancelled` soon after a cancel; both leave all files as they were.
    virtual Report run(znUtil::Progress& progress) = 0;
};

std::unique_ptr<Command> makeInfoCommand();
std::unique_ptr<Command> makeWeldCommand();
std::unique_ptr<Command> makeConvertCommand();
std::unique_ptr<Command> makeSplitCommand();
std::unique_ptr<Command> makeExtractCommand();
std::unique_ptr<Command> makeClosestCommand();
std::unique_ptr<Command> makeRayCommand();
std::unique_ptr<Command> makeInsideCommand();
std::unique_ptr<Command> makeCurvatureCommand();
std::unique_ptr<Command> makeDistanceCommand();
std::unique_ptr<Command> makeIntersectCommand();
std::unique_ptr<Command> makeCheckCommand();
std::unique_ptr<Command> makeRepairCommand();
std::unique_ptr<Command> makeReduceCommand();
std::unique_ptr<Command> makeFillCommand();
std::unique_ptr<Command> makeStitchCommand();
std::unique_ptr<Command> makeFlattenCommand();
std::unique_ptr<Command> makePackCommand();
std::unique_ptr<Command> makeOffsetCommand();
std::unique_ptr<Command> makeShellCommand();
std::unique_ptr<Command> makeSectionCommand();
std::unique_ptr<Command> makeProjectCommand();
std::unique_ptr<Command> makePolylineCommand();
std::unique_ptr<Command> makeOverlapCommand();
std::unique_ptr<Command> makeCutCommand();
std::unique_ptr<Command> makeCollarCommand();
std::unique_ptr<Command> makeSubdivideCommand();
std::unique_ptr<Command> makeExtrudeCommand();
std::unique_ptr<Command> makeHullCommand();
std::unique_ptr<Command> makeBoundsCommand();
std::unique_ptr<Command> makeStrokeCommand();
std::unique_ptr<Command> makeCurveCommand();

} // namespace tool
