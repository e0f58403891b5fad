#include "model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <random>
#include <sstream>

namespace {

using namespace model;

using Program = std::vector<Call>;

/// Makes programs of calls. The identifiers are few, so that records meet, replace each other and name missing ones.
class Generator
{
public:
    Generator(unsigned long long seed, const std::vector<Operation> &operations)
        : m_random(seed), m_operations(operations)
    {
        // Most programs dwell on some kinds of record, so that these fill up; the others see all of them together.
        const bool isAboutAll = isOneIn(3);
        while (m_choice.empty()) {
            std::map<std::string, bool> isChosen;
            for (const Operation &operation : operations) {
                const bool isAboutDevices = !operation.kind->parents.empty() || operation.kind->table == "Events";
                const auto [table, isNew] = isChosen.emplace(isAboutDevices ? "Devices" : operation.kind->table, false);
                table->second = isNew ? isAboutAll || isOneIn(3) : table->second;
                const std::size_t weight = operation.verb <= Verb::AddOne              ? 8
                                           : operation.verb <= Verb::Delete            ? 5
                                           : operation.verb >= Verb::ClearExceptEvents ? 1
                                                                                       : 3;
                if (table->second)
                    m_choice.insert(m_choice.end(), weight, &operation);
            }
        }
    }

    Program program(std::size_t length)
    {
        Program calls;
        while (calls.size() < length)
            calls.push_back(call(*m_choice[below(m_choice.size())]));
        // What no call of the program may have asked about.
        for (const Operation &operation : m_operations) {
            for (unsigned id = 0; id < 3; ++id) {
                if (operation.verb == Verb::RemoveFlag)
                    calls.push_back(requesting(operation, Record{{"D", Record{{"id", double(id)}}}}));
                else if (operation.verb == Verb::All && (operation.idCount == 1 || (operation.idCount == 0 && id == 0)))
                    calls.push_back({&operation, std::vector(operation.idCount, id)});
            }
        }
        return calls;
    }

private:
    std::size_t below(std::size_t end) { return m_random() % end; }
    bool isOneIn(std::size_t count) { return below(count) == 0; }

    template <class Items>
    const auto &oneOf(const Items &items)
    {
        return items[below(items.size())];
    }

    std::string text()
    {
        static const std::array<std::string, 3> likely{"", "a", "A"};
        static const std::array<std::string, 9> others{
            "5",    "Объект №1",          "東京", "😀", "naïve \"quoted\"", "back\\slash\nline", "x' OR 1=1 --",
            "null", std::string(300, 'y')};
        return isOneIn(2) ? oneOf(likely) : oneOf(others);
    }

    /// 0 to 2, the less the likelier.
    double small() { return double(std::min(below(3), below(3))); }

    double number(Type type)
    {
        static const std::array<double, 12> bounds{
            -1, 1.9, 255, 256, 300, 65535, 2147483647, 2147483648, 4294967295.0, 4294967296.0, 1e15, -2147483648.0};
        static const std::array<double, 5> reals{-0.5, 55.751244, 1e-7, -179.99999999999997, 90};
        if (type == Type::Real)
            return oneOf(reals);
        const double value = isOneIn(8) ? oneOf(bounds) : small();
        return type == Type::Wide && value < 0 ? 9007199254740992.0 : value;
    }

    double identifier() { return isOneIn(30) ? number(Type::Unsigned) : small(); }

    Value value(const Field &field)
    {
        if (field.type == Type::Text)
            return text();
        if (field.type == Type::Flag && isOneIn(4))
            return isOneIn(2);
        if (field.isObjectInRequest())
            return record(*field.other);
        if (field.type != Type::Items)
            return number(field.type);
        List items;
        for (std::size_t count = below(4); count > 0; --count)
            items.push_back(field.other ? Value(record(*field.other)) : number(Type::Unsigned));
        return items;
    }

    /// A record with its identifier and about half of its fields.
    Record record(const Kind &kind)
    {
        Record result{{isOneIn(8) && !kind.alternative.empty() ? kind.alternative : kind.id, identifier()}};
        for (const Field &field : kind.fields) {
            if (field.isInRequest() && isOneIn(2))
                result.emplace(field.key, value(field));
        }
        return result;
    }

    /// Puts something else in the place of some part of a request, or takes the part out.
    void damage(Value &value)
    {
        static const std::array<Value, 8> others{Value(), true,     7.0,       "7",
                                                 List(),  Record(), List{7.0}, Record{{"id", 1.0}}};
        auto *list = std::get_if<List>(&value);
        auto *object = std::get_if<Record>(&value);
        const std::size_t size = list ? list->size() : object ? object->size() : 0;
        const std::size_t position = size == 0 ? 0 : below(size);
        if (size == 0 || isOneIn(6))
            value = oneOf(others);
        else if (list)
            damage((*list)[position]);
        else if (const auto entry = std::next(object->begin(), static_cast<std::ptrdiff_t>(position)); isOneIn(6))
            object->erase(entry);
        else
            damage(entry->second);
    }

    Value request(const Operation &operation)
    {
        const Kind &kind = *operation.kind;
        Record content;
        if (operation.verb == Verb::Add) {
            List items;
            for (std::size_t count = 1 + below(3); count > 0; --count)
                items.push_back(record(kind));
            content.emplace("items", items);
        } else if (operation.verb <= Verb::Update) {
            content = record(kind);
            for (const std::string &parent : kind.parents)
                content.insert_or_assign(parent, identifier());
        } else {
            for (const std::string &key : kind.deleteKeys)
                content.emplace(key, isOneIn(20) ? Value("7") : identifier());
        }
        return Record{{"D", content}};
    }

    static Call requesting(const Operation &operation, const Value &request)
    {
        return {&operation, {}, {json(request)}, request};
    }

    Call call(const Operation &operation)
    {
        Call call{&operation};
        if (operation.verb <= Verb::RemoveFlag) {
            Value content = request(operation);
            if (isOneIn(12))
                damage(content);
            call = requesting(operation, content);
            if (isOneIn(100)) {
                call.request = Value();
                call.texts[0].pop_back();
            }
        } else if (operation.verb == Verb::Filter) {
            static const std::array<std::string, 4> odd{"", "Name", "device", "nothing"};
            const Field &field = oneOf(operation.kind->fields);
            const std::string key = isOneIn(10) ? oneOf(odd) : isOneIn(8) ? operation.kind->id : field.key;
            call.texts = {key, isOneIn(4) == (field.type != Type::Text) ? text() : json(number(Type::Signed))};
        } else if (operation.verb == Verb::SetServer) {
            call.texts = {text()};
        }
        for (std::size_t i = 0; i < operation.idCount; ++i)
            call.ids.push_back(isOneIn(20) ? 0xFFFFFFFF : static_cast<unsigned>(small()));
        call.isOccupied = operation.isGiving && isOneIn(40);
        return call;
    }

    std::mt19937_64 m_random;
    const std::vector<Operation> &m_operations;
    std::vector<const Operation *> m_choice;
};

/// What a call gave, and what it should have given.
struct Difference {
    std::size_t position;
    Outcome expected;
    Outcome outcome;
};

/// Runs programs, each on a cache without records.
class Runner
{
public:
    [[nodiscard]] const std::vector<Operation> &all() const { return m_operations; }

    /// The first difference between the library and the model.
    std::optional<Difference> run(const Program &program)
    {
        Model contract;
        clearAll();
        setServerIp(nullptr, 0);
        for (std::size_t i = 0; i < program.size(); ++i) {
            const Outcome expected = contract.call(program[i]);
            const Outcome outcome = program[i].operation->run(program[i]);
            if (outcome != expected)
                return Difference{i, expected, outcome};
        }
        return std::nullopt;
    }

    /// What is left of a failing program when no call can be dropped any more.
    Program shrunk(Program program)
    {
        program.resize(run(program)->position + 1);
        for (std::size_t size = program.size() / 2; size > 0; size /= 2) {
            for (std::size_t start = 0; start + size <= program.size();) {
                Program shorter = program;
                const auto from = shorter.begin() + static_cast<std::ptrdiff_t>(start);
                shorter.erase(from, from + static_cast<std::ptrdiff_t>(size));
                if (run(shorter))
                    program = std::move(shorter);
                else
                    start += size;
            }
        }
        return program;
    }

private:
    /// In memory where that can be had: nothing here is about a disk.
    const int m_place = std::filesystem::is_directory("/dev/shm") ? setenv("TMPDIR", "/dev/shm", 0) : 0;
    client::TemporaryDirectory m_directory;
    std::unique_ptr<client::RunningCache> m_cache = std::make_unique<client::RunningCache>();
    std::vector<Operation> m_operations = operations(m_cache);
};

std::string toText(const Program &program)
{
    std::ostringstream result;
    for (const Call &call : program) {
        result << "  " << call.operation->name;
        for (const unsigned id : call.ids)
            result << " " << id;
        for (const std::string &text : call.texts)
            result << " '" << text << "'";
        result << (call.isOccupied ? " with an occupied pointer\n" : "\n");
    }
    return result.str();
}

unsigned long long setting(const char *name, unsigned long long standard)
{
    const char *const value = std::getenv(name);
    return value == nullptr ? standard : std::strtoull(value, nullptr, 10);
}

/// The number of programs and the first seed can be set by TARNEL_MODEL_PROGRAMS and TARNEL_MODEL_SEED.
TEST(Model, anyProgramOfCallsDoesWhatTheContractSays)
{
    const unsigned long long first = setting("TARNEL_MODEL_SEED", 1);
    const unsigned long long end = first + setting("TARNEL_MODEL_PROGRAMS", 500);
    Runner runner;
    for (unsigned long long seed = first; seed < end; ++seed) {
        const Program program = Generator(seed, runner.all()).program(60);
        if (!runner.run(program))
            continue;
        const Program shortest = runner.shrunk(program);
        const Difference difference = *runner.run(shortest);
        FAIL() << "seed " << seed << "\n"
               << toText(shortest) << "expected " << difference.expected.code << " " << difference.expected.content
               << "\n     got " << difference.outcome.code << " " << difference.outcome.content;
    }
}

} // namespace
