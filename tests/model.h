#pragma once

#include "client.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
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

enum class Type { Text, Unsigned, Signed, Byte, Flag, Wide, Real, Nested, Attached, Children, Numbers, Joined, Lent };

/// How a field departs from the others of its type.
enum class Oddity {
    None,
    NoFilter,        ///< Other than any stored field it is refused as a filter.
    IdentifierAlone, ///< A record that is not cached is handed out with its identifier.
    WholeInRequest,  ///< The nested record is stored with the record.
    ReadApart        ///< Not joined: the identifier 0 names nothing, and the record is as when read alone.
};

struct Kind;

/// A member of a structure and what is behind it.
struct Field {
    std::string key; ///< As in requests; upper case if it is never part of one.
    Type type;
    std::function<Value(const void *)> dump = {};
    const Kind *other = nullptr;
    std::string by = {}; ///< The field with the identifier of the record that is looked up.
    Oddity oddity = Oddity::None;
};

/// A kind of record: how it is named in requests, stored and looked up.
struct Kind {
    std::string table;
    std::string id = "id";
    std::string alternative = {};
    std::vector<std::string> deleteKeys = {};
    std::vector<std::string> parents = {}; ///< A number is unique within the first of them.
    std::string asParent = {};             ///< What its parts call it.
    bool needsJoinedRows = false;          ///< Then nothing of a nested record is known but what is cached.
    std::vector<Field> fields = {};
};

template <class Api>
const Kind &kindOf();

enum class Verb {
    Add,
    AddOne,
    AddEvents,
    Get,
    All,
    Filter,
    Update,
    UpdateVersion,
    Delete,
    Range,
    Affects,
    RemoveFlag,
    NameAndAddress,
    Prune,
    SetServer,
    GetServer,
    ClearExceptEvents,
    ClearAll,
    Relaunch
};

/// What came of a call: its code, and what was handed out, as text.
struct Outcome {
    unsigned code = TARNEL_SUCCESS;
    std::string content;
    bool operator==(const Outcome &) const = default;
};

struct Operation;

/// A call with its arguments.
struct Call {
    const Operation *operation = nullptr;
    std::vector<unsigned> ids = {};
    std::string text = {}; ///< The request, or what else the call takes as text.
    Value request = {};    ///< The same, parsed; nothing if it is no JSON.
    std::string field = {};
    std::string value = {};
    bool isOccupied = false; ///< The output pointer points to something on entry.
};

/// One of the library's functions.
struct Operation {
    std::string name;
    Verb verb;
    const Kind *kind;
    std::size_t idCount;
    std::function<Outcome(const Call &)> run;
};

/// All functions of the library that touch its records; `cache` is the one that a relaunch exits and replaces.
std::vector<Operation> operations(std::optional<client::RunningCache> &cache);

/// Records as texts, in no order, or in theirs where the library promises one.
std::string text(std::vector<std::string> records, bool isOrdered);

/// The contract in memory.
class Model
{
public:
    Outcome call(const Call &call);

private:
    using Key = std::vector<double>;
    using Rows = std::vector<const Record *>;

    Outcome add(const Call &call);
    Outcome update(const Kind &kind, const Record &content, bool isVersionAlone);
    Outcome remove(const Kind &kind, const Record &content);
    Outcome removeFlag(const Record &content);
    void prune(unsigned date);

    void store(const Kind &kind, const Record &record, const Record &parents, bool isWhole);
    void erase(const std::string &table, const Record &match);

    [[nodiscard]] Record view(const Kind &kind, const Record &row, bool needsJoinedRows = false) const;
    [[nodiscard]] Value lentToEvent(const Record &event, const std::string &name) const;
    [[nodiscard]] Rows rows(const Kind &kind, const Record &match) const;
    [[nodiscard]] const Record *row(const Kind &kind, const Record &match) const;
    [[nodiscard]] Outcome handOut(const Kind &kind, const Rows &rows, bool isOrdered = false) const;
    [[nodiscard]] Rows eventsOfKnownDevices(const std::function<bool(const Record &)> &isWanted) const;

    std::map<std::string, std::map<Key, Record>> m_tables;
    std::string m_server;
};

} // namespace model
