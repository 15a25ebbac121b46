/// Lines as the commands over polylines take, change and write them.
#pragma once

#include <string>
#include <vector>

#include "apps/zngeom/files/polyline_files.h"
#include "apps/zngeom/frame/report.h"
#include "znGeom/planar/polylines/polyline.h"

namespace tool {

/// With the way along the line as its parameter; a closed one ends with its first point again.
znGeom::Polyline asLibraryLine(const Polyline& line);
/// \param tolerance  a line of four points or more whose ends are no farther apart along any axis is closed
Polyline fromLibraryLine(const znGeom::Polyline& line, double tolerance);

/// Leaves out what `decimate` does. Closed lines of which less than three points are left go.
/// \return how many went
int decimateLines(std::vector<Polyline>& lines, double tolerance);

/// All their segments, joined anew.
std::vector<Polyline> joinedLines(const std::vector<Polyline>& lines, double tolerance);

/// Checks, before any work is done, that lines can be written to this path; fails if not: .obj and .ply, an .svg
/// drawing, or a .csv table.
/// \param word  as in `formatOf`
void checkOutlineFormat(const std::string& path, const std::string& word);

/// Writes them. The table has a line for each point: the number of its line from 1, whether that is closed, 0 or 1, and
/// x y z.
/// \param axis  0 to 2, from where a drawing is seen: it is turned so that the next two axes lead right and up
void saveOutlines(const std::vector<Polyline>& lines, const std::string& path, const std::string& word, int axis);

/// Adds how many they are, how many of them open and closed, their points and length, and for programs each by itself.
void addLines(const std::vector<Polyline>& lines, Report& report);

} // namespace tool
