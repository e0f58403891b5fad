#pragma once

#include "client.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

/// What the library promises, said once more and as simply as can be: rows in maps, joins by looking them up.
namespace model {

struct Value;
using List = std::vector<Value>;
using Record = std::map<std::string, Value>;

/// A JSON value, and likewise what is stored or handed out. Nothing at all stands for what is absent, or for null.
struct Value : std::variant<std::monostate, bool, double, std::string, List, Record> {
    using variant::variant;
    [[nodiscard]] bool isAbsent() const { return index() == 0; }
};

std::string json(const Value &value);

enum class Type { Text, Unsigned, Signed, Byte, Flag, Wide, Real, Nested, Items, Count };

struct Kind;

/// A member of a structure and what is behind it.
struct Field {
    std::string key; ///< As in requests; in upper case if it is never part of one.
    std::string by;  ///< The field with the identifier of the nested record.
    Type type;
    const Kind *other = nullptr; ///< What is nested, or listed.

    [[nodiscard]] bool isInRequest() const { return key[0] >= 'a'; }
    /// Other nested records are named by their identifiers.
    [[nodiscard]] bool isObjectInRequest() const { return key == "contact" || key == "location"; }
};

/// A kind of record: how it is named in requests, stored and looked up.
struct Kind {
    std::string table;
    std::string id;
    std::string alternative; ///< Another key of the identifier.
    std::vector<std::string> deleteKeys;
    std::vector<std::string> parents; ///< The identifier is unique within the first of them.
    std::vector<Field> fields;
};

enum class Verb {
    Add,
    AddOne,
    Update,
    Delete,
    RemoveFlag,
    SetServer,
    Get,
    All,
    Filter,
    Range,
    Affects,
    Fields,
    GetServer,
    Prune,
    ClearExceptEvents,
    ClearAll,
    Relaunch
};

/// What came of a call: its code, and what was handed out, as text.
struct Outcome {
    unsigned code = TARNEL_SUCCESS;
    std::string content = {};
    bool operator==(const Outcome &) const = default;
};

struct Operation;

/// A call with its arguments.
struct Call {
    const Operation *operation = nullptr;
    std::vector<unsigned> ids = {};
    std::vector<std::string> texts = {}; ///< The request, or what else the call takes as texts.
    Value request = {};                  ///< The first text, parsed; nothing if it is no JSON.
    bool isOccupied = false;             ///< The output pointer points to something on entry.
};

/// One of the library's functions.
struct Operation {
    std::string name;
    Verb verb;
    const Kind *kind;
    std::size_t idCount;
    bool isGiving; ///< Takes an output pointer.
    std::function<Outcome(const Call &)> run;
};

/// All functions of the library that touch its records; `cache` is the one that a relaunch exits and replaces.
std::vector<Operation> operations(std::unique_ptr<client::RunningCache> &cache);

/// Records as one text, in no order, or in theirs where the library promises it.
std::string textOf(std::vector<std::string> records, bool isOrdered);

/// The contract in memory.
class Model
{
public:
    Outcome call(const Call &call);

private:
    using Key = std::vector<double>;
    using Rows = std::vector<const Record *>;

    Outcome carryOut(const Call &call);
    Outcome add(const Call &call, const Record &content);
    Outcome update(const Kind &kind, const Record &content);
    Outcome remove(const Kind &kind, const Record &content);
    Outcome removeFlag(const Kind &kind, const Record &content);
    void store(const Kind &kind, const Record &record, const Record &parents, bool isWhole);
    void erase(const std::string &table, const Record &match);

    [[nodiscard]] Record view(const Kind &kind, const Record &row, bool needsRows = false) const;
    [[nodiscard]] Value lentToEvent(const Record &event, const std::string &name) const;
    [[nodiscard]] Rows rows(const std::string &table, const Record &match) const;
    [[nodiscard]] const Record *row(const std::string &table, const Record &match) const;
    [[nodiscard]] Outcome handOut(const Kind &kind, const Rows &rows, bool isOrdered = false) const;
    [[nodiscard]] Outcome handOutEvents(const Kind &kind, const std::function<bool(const Record &)> &isWanted,
                                        bool isOrdered = false) const;

    std::map<std::string, std::map<Key, Record>> m_tables;
    std::string m_server;
};

} // namespace model
