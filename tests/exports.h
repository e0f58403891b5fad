#pragma once

#include "client.h"

/// The exported functions that work on the records, as the public header declares them: what holds for all of them is
/// tested on all of them, and a test calls any of them by its name.
namespace client {

struct Export {
    std::string name;
    std::size_t texts;   ///< How many texts it is given.
    std::size_t numbers; ///< How many numbers it is given, behind the texts.
    bool handsOutRecords;

    /// Calls it with the inputs in their order, and releases what it hands out.
    ///
    /// The answer is the code, followed after a success by what was handed out: "0 1|ru" is one record with its members
    /// in order, "-" for an absent one, "''" for an empty text, nothing for absent ones at the end, "(...)" around a
    /// nested record, "[...]" around a list. The records of a block are sorted. A call that fails and yet changes an
    /// output says so.
    std::function<std::string(const std::vector<Argument> &)> call;
    /// Calls it with a request, a filter and identifiers that fit every function.
    [[nodiscard]] std::string callWith(unsigned int id) const;
    [[nodiscard]] bool isRead() const { return name.starts_with("get"); }
};

const std::vector<Export> &exports();
const Export &exported(std::string_view name);
std::string call(std::string_view name, const std::vector<Argument> &inputs = {});

/// Adds one record of every kind, all with one identifier and with references to each other, and an event to prune.
void addOneOfEverything();

/// An "add" request of records that are given in JSON, separated by commas.
std::string items(const std::string &records);
/// One of records that follow a pattern, in which # stands for their identifiers.
std::string items(const std::string &pattern, unsigned int first, unsigned int last);
/// An "update" request.
std::string item(const std::string &record);

} // namespace client
