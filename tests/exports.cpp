#include "exports.h"

#include "client.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>

namespace client {

namespace {

using Kind = Parameter::Kind;

constexpr std::size_t maximumParameters = 8;

Parameter parse(const std::string &declaration)
{
    static const std::regex structurePattern(R"(TARNEL_STRUCT\((\w+)\))");
    static const std::regex namePattern(R"((\w+)\s*$)");
    std::smatch structure;
    std::smatch name;
    std::regex_search(declaration, name, namePattern);
    const auto stars = std::count(declaration.begin(), declaration.end(), '*');
    if (std::regex_search(declaration, structure, structurePattern))
        return {stars == 2 ? Kind::StructureOut : Kind::Structure, structure[1], name[1]};
    if (declaration.find("short") != std::string::npos)
        return {stars == 2 ? Kind::TextOut : Kind::Text, {}, name[1]};
    if (stars == 1)
        return {Kind::Count, {}, name[1]};
    return {std::regex_search(declaration, std::regex("[lL]ength$")) ? Kind::Length : Kind::Number, {}, name[1]};
}

std::vector<Export> parseHeader()
{
    std::ifstream file(TARNEL_HEADER);
    const std::string header{std::istreambuf_iterator<char>(file), {}};
    static const std::regex pattern(R"(TARNEL_EXPORT\s+(?:void|unsigned int)\s+(\w+)\(([^;]*)\);)");
    static const std::regex comma(R"(,\s*)");
    std::vector<Export> found;
    for (std::sregex_iterator match(header.begin(), header.end(), pattern), end; match != end; ++match) {
        Export function{(*match)[1], {}, ::dlsym(RTLD_DEFAULT, (*match)[1].str().c_str())};
        const std::string list = (*match)[2];
        if (list != "void")
            std::transform(std::sregex_token_iterator(list.begin(), list.end(), comma, -1),
                           std::sregex_token_iterator(), std::back_inserter(function.parameters),
                           [](const auto &declaration) { return parse(declaration); });
        if (function.address == nullptr || function.parameters.size() > maximumParameters)
            throw std::runtime_error(function.name + " cannot be called");
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
