#include "oracle/comparison.h"

#include "oracle/requestoracle.h"

#include <charconv>
#include <utility>

namespace oracle {

namespace {

void write(std::string &out, const Text &text)
{
    for (const char16_t unit : text.view())
        out.append(std::to_string(static_cast<unsigned int>(unit))).push_back(' ');
}

template <class Number>
requires std::is_arithmetic_v<Number>
void write(std::string &out, Number number)
{
    if constexpr (std::is_floating_point_v<Number>) {
        std::array<char, 32> digits; // A zero with its sign.
        out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
    } else {
        out.append(std::to_string(number));
    }
}

template <class Record>
requires requires
{
    Schema<Record>::fields;
}
void write(std::string &out, const Record &record);

template <class Items>
requires requires(const Items &items)
{
    items.begin();
}
void write(std::string &out, const Items &items)
{
    out.push_back('[');
    for (const auto &item : items) {
        write(out, item);
        out.push_back(',');
    }
    out.push_back(']');
}

template <class Value>
void write(std::string &out, const std::optional<Value> &value)
{
    if (value)
        write(out, *value);
    else
        out.push_back('-');
}

template <class Record>
requires requires
{
    Schema<Record>::fields;
}
void write(std::string &out, const Record &record)
{
    out.push_back('{');
    forEachField<Record>([&](const auto &row) {
        if constexpr (requires { row.key; }) {
            out.append(row.key).push_back(':');
            write(out, record.*row.member);
            out.push_back(' ');
        }
    });
    out.push_back('}');
}

template <class First, class Second>
void write(std::string &out, const std::pair<First, Second> &both)
{
    write(out, both.first);
    write(out, both.second);
}

/// Passes the value ahead. True if an object in it has more than 16 members, of which two have the same key.
bool repeatsKeyInLargeObject(JsonReader &json)
{
    bool isFound = false;
    if (json.type() == JsonReader::Type::Object) {
        std::vector<std::u16string> keys;
        json.readObject([&](std::u16string_view key) {
            keys.emplace_back(key);
            isFound = repeatsKeyInLargeObject(json) || isFound;
        });
        std::ranges::sort(keys);
        isFound = isFound || (keys.size() > 16 && std::ranges::adjacent_find(keys) != keys.end());
    } else if (json.type() == JsonReader::Type::Array) {
        json.readArray([&] { isFound = repeatsKeyInLargeObject(json) || isFound; });
    } else {
        json.skip();
    }
    return isFound;
}

/// Whether Qt leaves open what a text means. It sorts the members of an object and keeps the last of equal keys, but
/// its sort keeps the order of equal keys only up to 16 members; beyond, any of them may be the last.
bool isAmbiguous(std::u16string_view text)
{
    JsonReader json(text);
    return deserializeJsonObject(text) && repeatsKeyInLargeObject(json) && json.isComplete();
}

template <class Records>
Comparison compared(std::u16string_view text, Result expected, const Records &expectedRecords, Result actual,
                    const Records &actualRecords)
{
    Comparison comparison{expected, actual, {}, {}, expected == actual};
    if (expected == Result::Success)
        write(comparison.expectedRecords, expectedRecords);
    if (actual == Result::Success)
        write(comparison.actualRecords, actualRecords);
    comparison.isSame =
        (comparison.isSame && comparison.expectedRecords == comparison.actualRecords) || isAmbiguous(text);
    return comparison;
}

template <class Record>
Comparison compareAddItems(std::u16string_view text)
{
    std::vector<Record> expected;
    std::vector<Record> actual;
    return compared(text, oracle::parseAddItems(text, expected), expected,
                    tarnelLib::controller::parseAddItems(text, actual), actual);
}

template <class Record>
Comparison compareAddOrUpdateItem(std::u16string_view text)
{
    std::pair<std::optional<Record>, ParentIds<Record>> expected{};
    std::pair<std::optional<Record>, ParentIds<Record>> actual{};
    return compared(text, oracle::parseAddOrUpdateItem(text, expected.first, expected.second), expected,
                    tarnelLib::controller::parseAddOrUpdateItem(text, actual.first, actual.second), actual);
}

template <class Record>
Comparison compareDelete(std::u16string_view text)
{
    Identifiers<Record> expected{};
    Identifiers<Record> actual{};
    return compared(text, oracle::parseDelete<Record>(text, expected), expected,
                    tarnelLib::controller::parseDelete<Record>(text, actual), actual);
}

template <class Record>
const Shape &shapeOf();

template <class Value>
Shape::Member memberOf(std::string_view key, const std::optional<Value> & /*member*/)
{
    if constexpr (std::is_same_v<Value, Text>)
        return {key, Shape::Type::Text};
    else if constexpr (std::is_arithmetic_v<Value>)
        return {key, std::is_same_v<Value, bool> ? Shape::Type::Boolean : Shape::Type::Number};
    else
        return {key, Shape::Type::Object, false, &shapeOf<Value>()};
}

template <class Item>
Shape::Member memberOf(std::string_view key, const std::vector<Item> & /*member*/)
{
    if constexpr (std::is_arithmetic_v<Item>)
        return {key, Shape::Type::Numbers};
    else
        return {key, Shape::Type::Objects, false, &shapeOf<Item>()};
}

template <class Record>
Shape makeShape()
{
    Shape shape;
    const Record record;
    forEachField<Record>([&](const auto &row) {
        if constexpr (requires { row.requestKey; }) {
            shape.members.push_back({row.requestKey, Shape::Type::Number, true});
        } else if constexpr (requires { row.keys; }) {
            for (const std::string_view key : {row.key, row.keys.alternativeKey}) {
                if (!key.empty())
                    shape.members.push_back({key, Shape::Type::Number, key == row.key});
            }
        } else if constexpr (requires { row.key; }) {
            shape.members.push_back(memberOf(row.key, record.*row.member));
        }
    });
    return shape;
}

template <class Record>
const Shape &shapeOf()
{
    static const Shape shape = makeShape<Record>();
    return shape;
}

template <class Record>
const Shape &shapeOfIdentifiers()
{
    static const Shape shape = [] {
        Shape identifiers;
        for (const std::string_view key : identifierKeys<Record>())
            identifiers.members.push_back({key, Shape::Type::Number, true});
        return identifiers;
    }();
    return shape;
}

template <class... Record>
void appendAdd(std::vector<Reading> &list)
{
    (list.push_back({"add " + std::string(Schema<Record>::table), R"({"D":{"items":[)", "]}}", &shapeOf<Record>(),
                     compareAddItems<Record>}),
     ...);
}

template <class... Record>
void appendAddOrUpdate(std::vector<Reading> &list)
{
    (list.push_back({"update " + std::string(Schema<Record>::table), R"({"D":)", "}", &shapeOf<Record>(),
                     compareAddOrUpdateItem<Record>}),
     ...);
}

template <class... Record>
void appendDelete(std::vector<Reading> &list)
{
    (list.push_back({"delete " + std::string(Schema<Record>::table), R"({"D":)", "}", &shapeOfIdentifiers<Record>(),
                     compareDelete<Record>}),
     ...);
}

} // namespace

std::vector<Reading> readings()
{
    std::vector<Reading> list;
    appendAdd<Locale, Domain, User, Organization, Contractor, Contract, Device, Site, Event>(list);
    appendAddOrUpdate<Domain, User, Organization, Contractor, Contract, Device, Section, Zone, Site, Event>(list);
    appendDelete<Domain, User, Organization, Contractor, Contract, Device, Section, Zone, Site>(list);
    list.push_back({"remove affect", R"({"D":)", "}", &shapeOfIdentifiers<Event>(), compareDelete<Event>});
    return list;
}

} // namespace oracle
