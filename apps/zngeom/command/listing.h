/// Commands that read a mesh and a file of questions about it, and answer each of them on a line.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/files/loaded_mesh.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/report.h"

namespace tool {

class Listing
{
public:
    std::string mesh, questions;
    StreamFormats formats;

    /// Adds MESH, the questions, `-o` and `--format`.
    /// \param name, about  of the questions
    void addTo(CLI::App& app, const char* name, const char* about);

    /// Looks whether the answers may be written, and reads the mesh; fails where it has no triangles, or a vertex that
    /// is not finite.
    void load(LoadedMesh& loaded, znUtil::Progress& progress) const;

    /// The questions of commands that are asked about points.
    std::vector<znGeom::MeshVertex> loadPoints(znUtil::Progress& progress) const;

    bool isToFile() const { return !m_output.empty(); }

    /// Prints the answers, or writes them to the file that was asked for; then the report begins with the files.
    /// \param append  `append(text, index, json)` adds an answer, without a line end
    template <typename Append>
    Report answer(std::size_t count, const Append& append) const
    {
        const bool json = isJson();
        std::string text;
        for (std::size_t i = 0; i < count; ++i) {
            if (json) text += text.empty() ? "[" : ",\n";
            append(text, i, json);
            if (!json) text += '\n';
        }
        if (json) text += text.empty() ? "[]\n" : "]\n";
        return finish(std::move(text));
    }

private:
    bool isJson() const;
    Report finish(std::string text) const;

    CLI::App* m_app = nullptr;
    std::string m_output;
};

/// Calls `answer(begin, end)` for one piece of the questions after another, between which the user may stop.
template <typename Answer>
void answerInPieces(std::size_t count, znUtil::Progress& progress, const Answer& answer)
{
    constexpr std::size_t piece = 1 << 15;
    for (std::size_t begin = 0; begin < count; begin += piece) {
        checkCancelled(progress);
        answer(begin, std::min(count, begin + piece));
        progress.set(static_cast<double>(begin + piece) / static_cast<double>(count));
    }
}

} // namespace tool
