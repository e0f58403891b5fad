#include "exports.h"

#include "client.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace client {

namespace {

using Kind = Parameter::Kind;

constexpr std::size_t maximumParameters = 8;

/// The word that a text ends with.
std::string lastWord(const std::string &text)
{
    const auto isPartOfWord = [](unsigned char unit) { return std::isalnum(unit) != 0; };
    return {std::find_if_not(text.rbegin(), text.rend(), isPartOfWord).base(), text.end()};
}

Parameter parse(const std::string &declaration)
{
    const std::string name = lastWord(declaration);
    const auto stars = std::count(declaration.begin(), declaration.end(), '*');
    if (const std::size_t begin = declaration.find("STRUCT("); begin != std::string::npos)
        return {stars == 2 ? Kind::StructureOut : Kind::Structure,
                lastWord(declaration.substr(0, declaration.find(')', begin))), name};
    if (declaration.find("short") != std::string::npos)
        return {stars == 2 ? Kind::TextOut : Kind::Text, {}, name};
    if (stars == 1)
        return {Kind::Count, {}, name};
    const bool isLength = name == "length" || name == "fieldLength" || name == "valueLength";
    return {isLength ? Kind::Length : Kind::Number, {}, name};
}

std::vector<Export> parseHeader()
{
    std::ifstream file(TARNEL_HEADER);
    const std::string header{std::istreambuf_iterator<char>(file), {}};
    const std::string mark = "\nTARNEL_EXPORT ";
    std::vector<Export> found;
    for (std::size_t at = header.find(mark); at != std::string::npos; at = header.find(mark, at + 1)) {
        const std::size_t open = header.find('(', at);
        const std::string name = lastWord(header.substr(at, open - at));
        Export function{name, {}, ::dlsym(RTLD_DEFAULT, name.c_str())};
        std::istringstream list(header.substr(open + 1, header.find(");", open) - open - 1));
        for (std::string declaration; std::getline(list, declaration, ',') && declaration != "void";)
            function.parameters.push_back(parse(declaration));
        if (function.address == nullptr || function.parameters.size() > maximumParameters)
            throw std::runtime_error(name + " cannot be called");
        found.push_back(std::move(function));
    }
    return found;
}

/// The arguments are pointers and unsigned numbers, each of which is passed in a register or a slot of eight bytes.
unsigned int invoke(void *address, const std::array<std::uintptr_t, maximumParameters> &arguments)
{
    using Any = std::uintptr_t;
    using Function = unsigned int (*)(Any, Any, Any, Any, Any, Any, Any, Any);
    return std::apply(reinterpret_cast<Function>(address), arguments);
}

void release(const std::string &structure, void *block, bool isArray, unsigned int count)
{
    for (const Export &function : exports()) {
        const auto &parameters = function.parameters;
        if (!parameters.empty() && parameters[0].kind == Kind::Structure && parameters[0].structure == structure &&
            (parameters.size() == 2) == isArray)
            invoke(function.address, {reinterpret_cast<std::uintptr_t>(block), count});
    }
}

} // namespace

bool Export::needsCache() const
{
    return !parameters.empty() && parameters[0].kind != Kind::Structure;
}

unsigned int Export::call(unsigned int id) const
{
    const std::string number = std::to_string(id);
    const std::string record = R"({"id":)" + number + R"(,"name":"Å","domain":1,"locale_id":1})";
    const Text request(R"({"D":{"id":)" + number + R"(,"op_id":)" + number + R"(,"domain_id":)" + number +
                       R"(,"name":"ß","items":[)" + record + "]}}");
    const Text field("id");
    const Text value(number);
    const auto textFor = [&](const Parameter &parameter) -> const Text & {
        if (parameter.name.rfind("field", 0) == 0)
            return field;
        return parameter.name.rfind("value", 0) == 0 ? value : request;
    };
    std::array<void *, maximumParameters> outputs{};
    std::array<std::uintptr_t, maximumParameters> arguments{};
    unsigned int count = 0;
    bool isArray = false;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        switch (parameters[i].kind) {
        case Kind::StructureOut:
        case Kind::TextOut:
            arguments[i] = reinterpret_cast<std::uintptr_t>(&outputs[i]);
            break;
        case Kind::Count:
            arguments[i] = reinterpret_cast<std::uintptr_t>(&count);
            isArray = true;
            break;
        case Kind::Text:
            arguments[i] = reinterpret_cast<std::uintptr_t>(textFor(parameters[i]).units());
            break;
        case Kind::Length:
            arguments[i] = textFor(parameters[i - 1]).length();
            break;
        case Kind::Structure:
        case Kind::Number:
            arguments[i] = parameters[i].kind == Kind::Number ? id : 0;
            break;
        }
    }
    const unsigned int code = invoke(address, arguments);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (parameters[i].kind == Kind::TextOut)
            std::free(outputs[i]);
        else if (outputs[i] != nullptr)
            release(parameters[i].structure, outputs[i], isArray, count);
    }
    return code;
}

const std::vector<Export> &exports()
{
    static const std::vector<Export> all = parseHeader();
    return all;
}

} // namespace client
