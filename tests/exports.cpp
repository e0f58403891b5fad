#include "exports.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <stdexcept>

namespace client {

namespace {

using Kind = Parameter::Kind;

constexpr std::size_t maximumParameters = 8;

struct Member {
    std::string type;
    std::size_t offset;
    bool isPointer;
    bool isList; ///< Its count lies behind the pointer.
};

struct Structure {
    std::vector<Member> members;
    std::size_t size = 0;
};

const std::string &header()
{
    static const std::string text = [] {
        std::ifstream file(TARNEL_HEADER);
        const std::string all{std::istreambuf_iterator<char>(file), {}};
        return std::regex_replace(all, std::regex("/\\*[^*]*\\*+([^/*][^*]*\\*+)*/"), "");
    }();
    return text;
}

template <class Visit>
void forEachMatch(const std::string &text, const char *pattern, Visit &&visit)
{
    const std::regex expression(pattern);
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match)
        visit(*match);
}

std::map<std::string, Structure> parseStructures()
{
    std::map<std::string, Structure> found;
    forEachMatch(header(), "typedef struct (\\w+) \\{([^}]*)\\}", [&](const std::smatch &match) {
        Structure &structure = found[match[1]];
        forEachMatch(match[2].str(), "([\\w ]*\\w)\\s+(\\*?)(\\w+);", [&](const std::smatch &member) {
            const bool isPointer = member[2].length() != 0;
            const std::size_t size = isPointer ? sizeof(void *) : sizeof(unsigned int);
            const std::string type = std::regex_replace(member[1].str(), std::regex("^\\s+"), "");
            structure.size = (structure.size + size - 1) / size * size;
            if (const std::string name = member[3]; name.ends_with("Count"))
                structure.members.back().isList = true;
            else
                structure.members.push_back({type, structure.size, isPointer, false});
            structure.size += size;
        });
        structure.size = (structure.size + sizeof(void *) - 1) / sizeof(void *) * sizeof(void *);
    });
    return found;
}

const std::map<std::string, Structure> &structures()
{
    static const std::map<std::string, Structure> all = parseStructures();
    return all;
}

template <class Value>
Value load(const char *from)
{
    Value value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

std::string shownText(const char *text)
{
    const std::string content = utf8(reinterpret_cast<const unsigned short *>(text));
    return content.empty() ? "''" : content;
}

std::string shownReal(const char *value)
{
    std::string text = std::to_string(load<double>(value));
    return text.erase(text.find_last_not_of('0') + 1);
}

std::string shownRecord(const Structure &structure, const char *record);

/// One value of a type, and how far the next one in a list is.
std::pair<std::string, std::size_t> shown(const std::string &type, const char *value)
{
    if (type == "unsigned int")
        return {std::to_string(load<unsigned int>(value)), sizeof(unsigned int)};
    if (type == "int")
        return {std::to_string(load<int>(value)), sizeof(int)};
    if (type == "unsigned long long")
        return {std::to_string(load<unsigned long long>(value)), sizeof(unsigned long long)};
    if (type == "bool" || type == "unsigned char")
        return {std::to_string(load<unsigned char>(value)), 1};
    if (type == "double")
        return {shownReal(value), sizeof(double)};
    if (type == "unsigned short")
        return {shownText(value), 0};
    const Structure &structure = structures().at(type);
    return {"(" + shownRecord(structure, value) + ")", structure.size};
}

std::string shownRecord(const Structure &structure, const char *record)
{
    std::string all;
    std::size_t end = 0;
    for (const Member &member : structure.members) {
        const char *at = record + member.offset;
        const char *value = member.isPointer ? load<const char *>(at) : at;
        std::string text = value == nullptr ? "-" : shown(member.type, value).first;
        if (member.isList && value != nullptr) {
            text = "[";
            for (unsigned int left = load<unsigned int>(at + sizeof(void *)); left > 0; --left) {
                const auto [one, size] = shown(member.type, value);
                text.append(one).append(left > 1 ? " " : "");
                value += size;
            }
            text += "]";
        }
        all.append(all.empty() ? "" : "|").append(text);
        end = text == "-" ? end : all.size();
    }
    return all.substr(0, end);
}

/// Releases what was handed out.
bool isReleased(const std::string &structure, void *block, bool isArray, unsigned int count)
{
    return std::ranges::any_of(exports(), [&](const Export &function) {
        return function.has(Kind::Structure) && function.parameters[0].structure == structure &&
               (function.parameters.size() == 2) == isArray &&
               function.invoke({block, reinterpret_cast<void *>(std::uintptr_t{count})}) == TARNEL_SUCCESS;
    });
}

Parameter parseParameter(const std::string &declaration)
{
    std::smatch match;
    std::regex_match(declaration, match, std::regex("\\s*(?:const )?(.*?)([* ]*)(\\w+)\\s*"));
    const std::string type = match[1];
    const std::string name = match[3];
    const auto stars = std::ranges::count(match[2].str(), '*');
    if (type.starts_with("TARNEL_STRUCT("))
        return {stars == 2 ? Kind::StructureOut : Kind::Structure, type.substr(14, type.find(')') - 14), name};
    if (type == "unsigned short")
        return {stars == 2 ? Kind::TextOut : Kind::Text, {}, name};
    const bool isLength = name == "length" || name == "fieldLength" || name == "valueLength";
    return {stars == 1 ? Kind::Count : isLength ? Kind::Length : Kind::Number, {}, name};
}

std::vector<Export> parseFunctions()
{
    std::vector<Export> found;
    forEachMatch(header(), "\nTARNEL_EXPORT [\\w ]* (\\w+)\\(([^;]*)\\);", [&](const std::smatch &match) {
        Export function{match[1], {}, ::dlsym(RTLD_DEFAULT, match[1].str().c_str())};
        forEachMatch(match[2].str() == "void" ? "" : match[2].str(), "[^,]+",
                     [&](const std::smatch &one) { function.parameters.push_back(parseParameter(one.str())); });
        if (function.address == nullptr || function.parameters.size() > maximumParameters)
            throw std::runtime_error(function.name + " cannot be called");
        found.push_back(std::move(function));
    });
    return found;
}

} // namespace

bool Export::has(Parameter::Kind kind) const
{
    return std::ranges::any_of(parameters, [kind](const Parameter &parameter) { return parameter.kind == kind; });
}

bool Export::needsCache() const
{
    return !has(Kind::Structure) && name != "launchCache" && name != "exitCache" && name != "getState" &&
           name != "getLaunchCacheResult";
}

/// Every argument is a pointer or an unsigned number, and is passed in a register or a slot of eight bytes.
unsigned int Export::invoke(const std::vector<const void *> &arguments) const
{
    using Any = const void *;
    using Function = unsigned int (*)(Any, Any, Any, Any, Any, Any, Any, Any);
    std::array<Any, maximumParameters> all{};
    std::ranges::copy(arguments, all.begin());
    return std::apply(reinterpret_cast<Function>(address), all);
}

std::string Export::call(const std::vector<Argument> &inputs) const
{
    constexpr unsigned int untouched = 4711;
    std::array<void *, maximumParameters> outputs{};
    unsigned int count = untouched;
    std::vector<const void *> arguments;
    auto input = inputs.begin();
    for (const Parameter &parameter : parameters) {
        if (parameter.kind == Kind::StructureOut || parameter.kind == Kind::TextOut)
            arguments.push_back(&outputs[arguments.size()]);
        else if (parameter.kind == Kind::Count)
            arguments.push_back(&count);
        else if (parameter.kind == Kind::Length)
            arguments.push_back(reinterpret_cast<const void *>(std::uintptr_t{std::prev(input)->text.length()}));
        else if (input == inputs.end())
            throw std::invalid_argument(name + " takes more");
        else if (parameter.kind == Kind::Text)
            arguments.push_back((input++)->text.units());
        else
            arguments.push_back(reinterpret_cast<const void *>(std::uintptr_t{(input++)->number}));
    }
    if (input != inputs.end())
        throw std::invalid_argument(name + " takes less");
    const unsigned int code = invoke(arguments);

    std::string answer = std::to_string(code);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const Parameter &parameter = parameters[i];
        const auto *block = static_cast<const char *>(outputs[i]);
        if (parameter.kind == Kind::TextOut)
            answer += code == TARNEL_SUCCESS ? " " + (block == nullptr ? "-" : shownText(block)) : "";
        if (parameter.kind == Kind::TextOut)
            std::free(outputs[i]);
        if (code != TARNEL_SUCCESS && (block != nullptr || count != untouched))
            return answer + " with changed outputs";
        if (parameter.kind != Kind::StructureOut || code != TARNEL_SUCCESS)
            continue;
        const Structure &structure = structures().at(parameter.structure);
        std::vector<std::string> records;
        for (unsigned int left = has(Kind::Count) ? count : 1; left > 0; --left, block += structure.size)
            records.push_back(" " + shownRecord(structure, block));
        std::ranges::sort(records);
        for (const std::string &record : records)
            answer += record;
        if (!isReleased(parameter.structure, outputs[i], has(Kind::Count), count))
            answer += " not released";
    }
    return answer;
}

std::string Export::callWith(unsigned int id) const
{
    const std::string number = std::to_string(id);
    const std::string record = std::regex_replace(
        std::string(R"("id":#,"org_id":#,"op_id":#,"domain_id":#,"site_id":#,"name":"Å","domain":#,"locale_id":#,)"
                    R"("contact":{"id":#},"contractor_id":#,"operator_id":#,"contract_id":#,"location":{"lat":1.5},)"
                    R"("device":#,"section":#,"zone":#,"time":#,"affect":1,"account":#,"config_version":#,)"
                    R"("sections":[{"id":#,"name":"S","zones":[{"id":#,"name":"Z"}]}],)"
                    R"("users":[{"user_index":#,"name":"U","sections":[#]}])"),
        std::regex("#"), number);
    // The device of the site differs, so that an update of it changes something.
    const std::string device = std::regex_replace(record, std::regex("(config_version\":)"), "$014");
    const std::string whole = record + R"(,"devices":[{)" + device + "}]";
    const bool isOrganization = name.find("Organization") != std::string::npos;
    std::vector<Argument> inputs;
    for (const Parameter &parameter : parameters) {
        if (parameter.name == "field")
            inputs.emplace_back(isOrganization ? "org_id" : "id");
        else if (parameter.name == "value")
            inputs.emplace_back(number);
        else if (parameter.kind == Kind::Text)
            inputs.emplace_back(item("{" + whole + R"(,"items":[{)" + whole + "}]}"));
        else if (parameter.kind == Kind::Number)
            inputs.emplace_back(parameter.name == "from" ? 0 : parameter.name == "to" ? ~0U : id);
    }
    return call(inputs);
}

const std::vector<Export> &exports()
{
    static const std::vector<Export> all = parseFunctions();
    return all;
}

const Export &exported(std::string_view name)
{
    const auto function = std::ranges::find(exports(), name, &Export::name);
    return function == exports().end() ? throw std::invalid_argument(std::string(name)) : *function;
}

std::string call(std::string_view name, const std::vector<Argument> &inputs)
{
    return exported(name).call(inputs);
}

void addOneOfEverything(unsigned int id)
{
    for (const Export &function : exports()) {
        if (function.name.starts_with("add") && function.callWith(id)[0] != '0')
            throw std::runtime_error(function.name + " does not add");
    }
    call("addEvent", {item(R"({"time":0,"affect":0,"id":10)" + std::to_string(id) + "}")});
}

std::string items(const std::string &records)
{
    return R"({"D":{"items":[)" + records + "]}}";
}

std::string item(const std::string &record)
{
    return R"({"D":)" + record + "}";
}

} // namespace client
