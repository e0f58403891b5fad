#include "exports.h"

#include "declarations.h"

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <set>
#include <stdexcept>
#include <tuple>

namespace client {

namespace {

template <class Value>
std::string shown(const Value &value)
{
    std::ostringstream all;
    if constexpr (std::is_convertible_v<Value, const unsigned short *>) {
        const std::string text = value == nullptr ? "-" : utf8(value);
        return text.empty() ? "''" : text;
    } else if constexpr (std::is_pointer_v<Value>) {
        return value == nullptr ? "-" : shown(*value);
    } else if constexpr (std::is_arithmetic_v<Value>) {
        all << +value;
        return all.str();
    } else if constexpr (requires { value.second; }) {
        const auto [items, count] = value;
        if ((items == nullptr) != (count == 0))
            return "a count that does not fit";
        for (unsigned int i = 0; i < count; ++i)
            all << (i == 0 ? "[" : " ") << shown(items[i]);
        return count == 0 ? "-" : all.str() + "]";
    } else {
        std::apply([&](const auto &...member) { ((all << shown(member) << '|'), ...); }, membersOf(value));
        std::string text = "(" + all.str();
        while (text.ends_with("|-|"))
            text.erase(text.size() - 2);
        return text.substr(0, text.size() - 1) + ")";
    }
}

/// One call of a function: gives the parameters their values, and takes what they have received.
class Call
{
public:
    explicit Call(const std::vector<Argument> &inputs) : m_inputs(inputs) {}

    void give(const unsigned short *&text)
    {
        m_text = &m_inputs.at(m_next++);
        text = m_text->units();
    }
    void give(unsigned int &number)
    {
        number = m_text != nullptr ? m_text->length() : m_inputs.at(m_next++).number;
        m_text = nullptr;
    }
    void give(unsigned int *&count)
    {
        count = &m_count;
        m_isArray = true;
    }
    template <class Out>
    void give(Out **&out)
    {
        out = new Out *(nullptr);
    }

    template <class Input>
    std::string taken(unsigned int, Input)
    {
        return "";
    }
    std::string taken(unsigned int code, const unsigned int *count)
    {
        return (code == TARNEL_SUCCESS) != (*count == untouched) ? "" : " with a wrong count";
    }
    template <class Out>
    std::string taken(unsigned int code, Out **out)
    {
        const std::unique_ptr<Out *> owner(out);
        if (code != TARNEL_SUCCESS)
            return *out == nullptr ? "" : " with an output";
        std::multiset<std::string> sorted;
        if constexpr (std::is_class_v<Out>) {
            for (unsigned int i = 0; i < (m_isArray ? m_count : 1); ++i) {
                const std::string record = shown((*out)[i]);
                sorted.insert(record.substr(1, record.size() - 2));
            }
            if (release(*out, m_isArray, m_count) != TARNEL_SUCCESS)
                return " not released";
        } else {
            sorted.insert(shown(*out));
            std::free(*out);
        }
        std::string all;
        for (const std::string &one : sorted)
            all += " " + one;
        return all;
    }

private:
    static constexpr unsigned int untouched = 4711;

    const std::vector<Argument> &m_inputs;
    std::size_t m_next = 0;
    const Argument *m_text = nullptr; ///< The one of which the length is due.
    unsigned int m_count = untouched;
    bool m_isArray = false;
};

/// A text in which # stands for a number.
std::string numbered(const std::string &text, unsigned int number)
{
    static const std::regex mark("#");
    return std::regex_replace(text, mark, std::to_string(number));
}

template <class... Parameters>
Export makeExport(const char *name, unsigned int (*function)(Parameters...))
{
    const std::size_t texts = (0U + ... + std::is_same_v<Parameters, const unsigned short *>);
    const std::size_t numbers = (0U + ... + std::is_same_v<Parameters, unsigned int>)-texts;
    const bool handsOutRecords = (std::is_class_v<std::remove_pointer_t<std::remove_pointer_t<Parameters>>> || ...);
    return {name, texts, numbers, handsOutRecords, [=](const std::vector<Argument> &inputs) {
                Call call(inputs);
                const auto carryOut = [&](Parameters &...parameter) {
                    (call.give(parameter), ...);
                    const unsigned int code = function(parameter...);
                    return (std::to_string(code) + ... + call.taken(code, parameter));
                };
                std::tuple<Parameters...> parameters;
                return std::apply(carryOut, parameters);
            }};
}

} // namespace

std::string Export::callWith(unsigned int id) const
{
    static const std::string request = readData("request.json");
    std::vector<Argument> inputs;
    if (texts == 2)
        inputs = {name.find("Organization") != std::string::npos ? "org_id" : "id", std::to_string(id)};
    else if (texts == 1)
        inputs = {numbered(request, id)};
    inputs.resize(texts + numbers, id);
    return call(name == "getEvents" ? std::vector<Argument>{0, ~0U} : inputs);
}

const std::vector<Export> &exports()
{
#define TARNEL_MAKE(name) makeExport(#name, name),
    static const std::vector<Export> all{TARNEL_FUNCTIONS(TARNEL_MAKE)};
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

void addOneOfEverything()
{
    for (const Export &function : exports()) {
        if (function.name.starts_with("add") && function.callWith(1)[0] != '0')
            throw std::runtime_error(function.name + " does not add");
    }
    call("addEvent", {item(R"({"time":0,"affect":0,"id":101})")});
}

std::string items(const std::string &records)
{
    return R"({"D":{"items":[)" + records + "]}}";
}

std::string items(const std::string &pattern, unsigned int first, unsigned int last)
{
    std::string records;
    for (unsigned int id = first; id <= last; ++id)
        records += (id == first ? "" : ",") + numbered(pattern, id);
    return items(records);
}

std::string item(const std::string &record)
{
    return R"({"D":)" + record + "}";
}

} // namespace client
