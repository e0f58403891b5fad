#pragma once

#include <string>
#include <vector>

namespace client {

/// What stands for what in the declaration of an exported function.
struct Parameter {
    enum class Kind { Structure, StructureOut, TextOut, Count, Text, Length, Number };
    Kind kind;
    std::string structure; ///< The name of the structure, if it is about one.
    std::string name;
};

/// A function as the public header declares it: what holds for all of them is tested on all of them, without a list.
struct Export {
    std::string name;
    std::vector<Parameter> parameters;
    void *address;

    /// Whether it works on the records.
    [[nodiscard]] bool needsCache() const;
    /// Calls it with a request, a filter and an identifier that fit any kind, and releases what it hands out.
    [[nodiscard]] unsigned int call(unsigned int id) const;
};

const std::vector<Export> &exports();

} // namespace client
