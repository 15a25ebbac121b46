/// The named meshes that every benchmark runs on, and their files in a temporary folder.
#pragma once

#include "bench/generate.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// One mesh; its forms are made when first asked for and kept.
class Input
{
public:
    Input(std::string name, std::function<Soup()> make);

    const std::string& name() const { return name_; }
    const Soup& soup() const;
    const Soup& blownUp() const;

    /// Files that hold `soup()`, numbers with six significant digits, faces as bare indices without stray blanks.
    const std::string& objFile() const;
    const std::string& plainFile() const;
    const std::string& offFile() const;

private:
    std::string name_;
    std::function<Soup()> make_;
    mutable Soup soup_, blownUp_;
    mutable std::string objFile_, plainFile_, offFile_;
};

/// The available meshes: those from files are left out where the folder of meshes is missing.
const std::vector<Input>& inputs();

/// The names of those that are generated: closed surfaces without flaws.
inline std::vector<std::string> generatedInputs() { return {"torus_small", "torus", "torus_shuffled"}; }

/// A `Subject` made from the `Soup` of this input when first asked for, and kept: for what takes longer to make than to
/// measure.
template <class Subject>
Subject& madeOnce(const Input& input)
{
    static std::map<const Input*, std::unique_ptr<Subject>> made;
    std::unique_ptr<Subject>& subject = made[&input];
    if (!subject) subject = std::make_unique<Subject>(input.soup());
    return *subject;
}

/// A name for a file in the temporary folder, which is removed when the program ends.
std::string temporaryFile(const std::string& name);

/// Positions and triangles of an OBJ file; attributes, and faces that are not triangles, are skipped.
Soup readObjFile(const std::filesystem::path& file);
/// The same for a file of counts, positions and faces, after a first line "OFF" or without one.
Soup readPlainFile(const std::filesystem::path& file);

} // namespace bench
