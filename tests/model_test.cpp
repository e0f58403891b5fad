#include "model.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <random>
#include <span>
#include <sstream>

namespace {

using namespace model;
using client::api::Device;
using client::api::Event;

using Program = std::vector<Call>;

/// Makes programs of calls. The identifiers are few, so that records meet, replace each other and name missing ones.
class Generator
{
public:
    Generator(unsigned long long seed, const std::vector<Operation> &operations) : m_random(seed)
    {
        // Most programs dwell on some kinds of record, so that these fill up; the others see all of them together.
        const bool isAboutAll = isOneIn(3);
        std::map<const Kind *, bool> isChosen;
        while (m_choice.empty()) {
            isChosen.clear();
            for (const Operation &operation : operations) {
                const bool isAboutDevices = !operation.kind->parents.empty() || operation.kind == &kindOf<Event>();
                const auto [kind, isNew] = isChosen.emplace(isAboutDevices ? &kindOf<Device>() : operation.kind, false);
                kind->second = isNew ? isAboutAll || isOneIn(3) : kind->second;
                if (kind->second)
                    m_choice.insert(m_choice.end(), weightOf(operation.verb), &operation);
            }
        }
    }

    Program program(std::size_t length, const std::vector<Operation> &operations)
    {
        Program calls;
        while (calls.size() < length)
            calls.push_back(call(*m_choice[below(m_choice.size())]));
        // What no call of the program has asked about.
        for (const Operation &operation : operations) {
            const std::size_t count = operation.verb == Verb::RemoveFlag                     ? 4
                                      : operation.verb == Verb::All && operation.idCount < 2 ? 1 + 2 * operation.idCount
                                                                                             : 0;
            for (std::size_t id = 0; id < count; ++id) {
                Call last{.operation = &operation, .ids = std::vector(operation.idCount, static_cast<unsigned>(id))};
                if (operation.verb == Verb::RemoveFlag)
                    last.request = Record{{"D", Record{{"id", double(id)}}}};
                last.text = last.request.isAbsent() ? "" : json(last.request);
                calls.push_back(std::move(last));
            }
            if (operation.verb == Verb::Range)
                calls.push_back({.operation = &operation, .ids = {0, 0xFFFFFFFF}});
        }
        return calls;
    }

private:
    static std::size_t weightOf(Verb verb)
    {
        switch (verb) {
        case Verb::Add:
        case Verb::AddOne:
        case Verb::AddEvents:
            return 8;
        case Verb::Update:
        case Verb::UpdateVersion:
            return 6;
        case Verb::Delete:
            return 4;
        case Verb::ClearAll:
        case Verb::ClearExceptEvents:
        case Verb::Relaunch:
            return 1;
        default:
            return 3;
        }
    }

    std::size_t below(std::size_t end) { return m_random() % end; }
    bool isOneIn(std::size_t count) { return below(count) == 0; }

    template <class Item, std::size_t Size>
    const Item &oneOf(const std::array<Item, Size> &items)
    {
        return items[below(Size)];
    }

    std::string text()
    {
        static const std::array<std::string, 12> texts{"",
                                                       "a",
                                                       "A",
                                                       "5",
                                                       "Объект №1",
                                                       "東京",
                                                       "😀",
                                                       "naïve \"quoted\"",
                                                       "back\\slash\nline",
                                                       "x' OR 1=1 --",
                                                       "null",
                                                       std::string(300, 'y')};
        return texts[below(isOneIn(2) ? 3 : texts.size())];
    }

    /// 0 to 2, the less the likelier.
    double small() { return double(std::min(below(3), below(3))); }

    double number(Type type)
    {
        static const std::array<double, 12> bounds{
            -1, 1.9, 255, 256, 300, 65535, 2147483647, 2147483648, 4294967295., 4294967296., 1e15, -2147483648.};
        static const std::array<double, 5> reals{-0.5, 55.751244, 1e-7, -179.99999999999997, 90};
        if (type == Type::Real)
            return oneOf(reals);
        const double value = isOneIn(8) ? oneOf(bounds) : small();
        return type == Type::Wide && value < 0 ? 9007199254740992. : value;
    }

    double identifier() { return isOneIn(30) ? number(Type::Unsigned) : small(); }

    Value value(const Field &field)
    {
        switch (field.type) {
        case Type::Text:
            return text();
        case Type::Flag:
            return isOneIn(4) ? Value(isOneIn(2)) : Value(number(Type::Flag));
        case Type::Nested:
            if (field.oddity != Oddity::WholeInRequest)
                return number(Type::Unsigned);
            return record(*field.other);
        case Type::Attached:
            return record(*field.other);
        case Type::Children:
        case Type::Numbers: {
            List items;
            for (std::size_t count = below(4); count > 0; --count)
                items.push_back(field.other ? Value(record(*field.other)) : Value(number(Type::Unsigned)));
            return items;
        }
        default:
            return number(field.type);
        }
    }

    /// A record with its identifier and about half of its fields.
    Record record(const Kind &kind)
    {
        Record result{{isOneIn(8) && !kind.alternative.empty() ? kind.alternative : kind.id, identifier()}};
        for (const Field &field : kind.fields) {
            if (field.type < Type::Joined && isOneIn(2))
                result.emplace(field.key, value(field));
        }
        return result;
    }

    /// Puts something else in the place of some part of a request, or takes the part out.
    void damage(Value &value)
    {
        static const std::array<Value, 8> others{Value(), true,     7.0,       std::string("7"),
                                                 List(),  Record(), List{7.0}, Record{{"id", 1.0}}};
        auto *list = std::get_if<List>(&value);
        auto *object = std::get_if<Record>(&value);
        const std::size_t size = list ? list->size() : object ? object->size() : 0;
        if (size == 0 || isOneIn(6)) {
            value = oneOf(others);
            return;
        }
        const auto position = static_cast<std::ptrdiff_t>(below(size));
        if (list)
            damage((*list)[static_cast<std::size_t>(position)]);
        else if (const auto member = std::next(object->begin(), position); isOneIn(6))
            object->erase(member);
        else
            damage(member->second);
    }

    Value request(const Operation &operation)
    {
        const Kind &kind = *operation.kind;
        if (operation.verb == Verb::Add || operation.verb == Verb::AddEvents) {
            List items;
            for (std::size_t count = 1 + below(3); count > 0; --count)
                items.push_back(record(kind));
            return Record{{"D", Record{{"items", items}}}};
        }
        Record content;
        if (operation.verb == Verb::Delete || operation.verb == Verb::RemoveFlag) {
            for (const std::string &key : kind.deleteKeys)
                content.emplace(key, isOneIn(20) ? Value("7") : identifier());
        } else {
            content = record(kind);
            for (const std::string &parent : kind.parents)
                content.insert_or_assign(parent, identifier());
        }
        return Record{{"D", content}};
    }

    Call call(const Operation &operation)
    {
        Call call{&operation, {}, {}, {}, {}, {}, false};
        for (std::size_t i = 0; i < operation.idCount; ++i)
            call.ids.push_back(isOneIn(20) ? 0xFFFFFFFF : static_cast<unsigned>(small()));
        switch (operation.verb) {
        case Verb::Filter: {
            const auto &fields = operation.kind->fields;
            const Field &field = fields[below(fields.size())];
            static const std::array<std::string, 4> odd{"", "Name", "device", "nothing"};
            call.field = isOneIn(10) ? oneOf(odd) : isOneIn(8) ? operation.kind->id : field.key;
            call.value = isOneIn(4) == (field.type != Type::Text) ? text() : json(number(Type::Signed));
            break;
        }
        case Verb::SetServer:
            call.text = text();
            break;
        case Verb::Add:
        case Verb::AddOne:
        case Verb::AddEvents:
        case Verb::Update:
        case Verb::UpdateVersion:
        case Verb::Delete:
        case Verb::RemoveFlag:
            call.request = request(operation);
            if (isOneIn(12))
                damage(call.request);
            call.text = json(call.request);
            if (isOneIn(100)) {
                call.request = Value();
                call.text.pop_back();
            }
            break;
        default:
            break;
        }
        const bool isHandingOut =
            operation.verb != Verb::Add && operation.verb != Verb::Delete && operation.verb < Verb::Prune;
        call.isOccupied = (isHandingOut || operation.verb == Verb::GetServer) && isOneIn(40);
        return call;
    }

    std::mt19937_64 m_random;
    std::vector<const Operation *> m_choice;
};

/// What a call gave and should have given.
struct Difference {
    std::size_t position;
    Outcome expected;
    Outcome outcome;
};

/// Runs programs, each on a cache without records.
class Runner
{
public:
    Runner() : m_operations(operations(m_cache)) { m_cache.emplace(); }

    [[nodiscard]] const std::vector<Operation> &all() const { return m_operations; }

    /// The first difference between the library and the model.
    std::optional<Difference> run(std::span<const Call> program)
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
    struct Place {
        Place()
        {
            if (std::filesystem::is_directory("/dev/shm"))
                setenv("TMPDIR", "/dev/shm", 0);
        }
    };

    Place m_place;
    client::TemporaryDirectory m_directory;
    std::optional<client::RunningCache> m_cache;
    std::vector<Operation> m_operations;
};

std::string toText(std::span<const Call> program)
{
    std::ostringstream result;
    for (const Call &call : program) {
        result << "  " << call.operation->name;
        for (const unsigned id : call.ids)
            result << " " << id;
        if (call.operation->verb == Verb::Filter)
            result << " \"" << call.field << "\" = \"" << call.value << "\"";
        result << " " << call.text << (call.isOccupied ? " (out pointer occupied)\n" : "\n");
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
    const unsigned long long count = setting("TARNEL_MODEL_PROGRAMS", 500);
    Runner runner;
    for (unsigned long long seed = first; seed < first + count; ++seed) {
        const Program program = Generator(seed, runner.all()).program(60, runner.all());
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
