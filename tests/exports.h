#pragma once

#include "client.h"

#include <string>
#include <vector>

/// The exported functions and structures as the public header declares them: what holds for all of them is tested on
/// all of them, and a test calls any of them by its name.
namespace client {

/// What stands for what in the declaration of an exported function.
struct Parameter {
    enum class Kind { Structure, StructureOut, TextOut, Count, Text, Length, Number };
    Kind kind;
    std::string structure; ///< The name of the structure, if it is about one.
    std::string name;
};

/// What a call is given: a text with its length, or a number.
struct Argument {
    Argument(const char *utf8) : text(utf8) {}
    Argument(const std::string &utf8) : text(utf8) {}
    Argument(Text units) : text(std::move(units)) {}
    Argument(unsigned int value) : text(""), number(value) {}
    Argument(int value) : Argument(static_cast<unsigned int>(value)) {}

    Text text;
    unsigned int number = 0;
};

struct Export {
    std::string name;
    std::vector<Parameter> parameters;
    void *address;

    /// Whether it works on the records.
    [[nodiscard]] bool needsCache() const;
    [[nodiscard]] bool isRead() const { return name.rfind("get", 0) == 0; }
    [[nodiscard]] bool has(Parameter::Kind kind) const;

    /// Calls it with the inputs in their order, and releases what it hands out.
    ///
    /// The answer is the code, followed after a success by what was handed out: "0 1|ru" is one record with its members
    /// in order, "-" for an absent one, "''" for an empty text, nothing for absent ones at the end, "(...)" around a
    /// nested record, "[...]" around a list. The records of a block are sorted. A call that fails and yet changes an
    /// output says so.
    [[nodiscard]] std::string call(const std::vector<Argument> &inputs) const;
    /// Calls it with a request, a filter and identifiers that fit every function.
    [[nodiscard]] std::string callWith(unsigned int id) const;
    /// Calls it with these very arguments, pointers and numbers alike.
    [[nodiscard]] unsigned int invoke(const std::vector<const void *> &arguments) const;
};

const std::vector<Export> &exports();
const Export &exported(std::string_view name);
std::string call(std::string_view name, const std::vector<Argument> &inputs = {});

/// Adds one record of every kind, all with one identifier and with references to each other, and an event to prune.
void addOneOfEverything(unsigned int id = 1);

/// An "add" request of records that are given in JSON, separated by commas.
std::string items(const std::string &records);
/// An "update" request.
std::string item(const std::string &record);

} // namespace client
