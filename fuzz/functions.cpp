#include "functions.h"

#include "declarations.h"
#include "generator.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <type_traits>

namespace fuzz {

namespace {

/// Reads every byte of what was handed out.
template <class Value>
void write(std::string &out, const Value &value)
{
    if constexpr (std::is_convertible_v<Value, const unsigned short *>) {
        if (value == nullptr) {
            out += '-';
            return;
        }
        out += '\'';
        for (const unsigned short *unit = value; *unit != 0; ++unit) {
            if (*unit < 0x80)
                out += static_cast<char>(*unit);
            else
                out += '\\' + std::to_string(*unit) + ' ';
        }
        out += '\'';
    } else if constexpr (std::is_pointer_v<Value>) {
        if (value == nullptr)
            out += '-';
        else
            write(out, *value);
    } else if constexpr (std::is_floating_point_v<Value>) {
        std::array<char, 32> digits{};
        std::snprintf(digits.data(), digits.size(), "%.17g", value);
        out += digits.data();
    } else if constexpr (std::is_arithmetic_v<Value>) {
        out += std::to_string(value);
    } else if constexpr (requires { value.second; }) {
        const auto [items, count] = value;
        out += (items == nullptr) == (count == 0) ? "[" : "a count that does not fit";
        for (unsigned int i = 0; i < count; ++i)
            write(out, items[i]);
        out += ']';
    } else {
        out += '(';
        std::apply([&](const auto &...member) { ((write(out, member), out += '|'), ...); }, membersOf(value));
        out.back() = ')';
    }
}

/// Gives the parameters of a call their values, and takes what they have received.
class Parameters
{
public:
    explicit Parameters(const Call &call) : m_call(call) {}

    void give(const unsigned short *&text)
    {
        const std::vector<char16_t> &units = m_texts.at(m_textCount++) = unitsOf(nextInput());
        text = reinterpret_cast<const unsigned short *>(isWrong('-') ? nullptr : units.data());
        answer.isRefused = answer.isRefused || (text == nullptr && !units.empty());
        m_length = &units;
        ++m_position;
    }
    void give(unsigned int &number)
    {
        if (m_length == nullptr) {
            number = static_cast<unsigned int>(std::strtoul(std::string(nextInput()).c_str(), nullptr, 10));
        } else {
            number = isWrong('-') ? 1U << 31 : static_cast<unsigned int>(m_length->size());
            answer.isRefused = answer.isRefused || isWrong('-');
        }
        m_length = nullptr;
        ++m_position;
    }
    void give(unsigned int *&count)
    {
        m_isArray = true;
        count = isWrong('-') ? nullptr : &m_count;
        answer.isRefused = answer.isRefused || count == nullptr;
        ++m_position;
    }
    template <class Out>
    void give(Out **&out)
    {
        out = isWrong('-') ? nullptr : new Out *(nullptr);
        if (isWrong('+'))
            m_occupant = *out = static_cast<Out *>(std::calloc(1, sizeof(Out)));
        // That one function releases the block that is there.
        answer.isRefused = answer.isRefused || out == nullptr || (*out != nullptr && m_call.name != "removeAffectFlag");
        ++m_position;
    }

    void finish(unsigned int code)
    {
        answer.code = code;
        m_position = 0;
    }

    template <class Input>
    void take(Input)
    {
        ++m_position;
    }
    void take(const unsigned int *count)
    {
        if (count != nullptr && (answer.code == TARNEL_SUCCESS) == (*count == untouched))
            fail(m_call.name, "a count that does not fit the code");
        ++m_position;
    }
    template <class Out>
    void take(Out **out)
    {
        const std::unique_ptr<Out *> owner(out);
        if (answer.code == TARNEL_SUCCESS) {
            takeRecords(*out);
        } else if (out != nullptr) {
            if (*out != (isWrong('+') ? m_occupant : nullptr))
                fail(m_call.name, "an output that was changed by a call that failed");
            std::free(*out);
        }
        ++m_position;
    }

    Answer answer;

private:
    static constexpr unsigned int untouched = 4711;

    [[nodiscard]] std::string_view nextInput()
    {
        return m_next < m_call.inputs.size() ? m_call.inputs[m_next++] : std::string_view();
    }

    [[nodiscard]] bool isWrong(char how) const { return m_call.wrong == how && m_call.wrongParameter == m_position; }

    template <class Out>
    void takeRecords(Out *out)
    {
        if constexpr (std::is_class_v<Out>) {
            if (out == nullptr)
                fail(m_call.name, "a success without a record");
            for (unsigned int i = 0; i < (m_isArray ? m_count : 1); ++i)
                write(answer.records.emplace_back(), out[i]);
            if (release(out, m_isArray, m_count) != TARNEL_SUCCESS)
                fail(m_call.name, "a record that is not released");
        } else {
            write(answer.records.emplace_back(), out);
            std::free(out);
        }
    }

    const Call &m_call;
    std::size_t m_next = 0;     ///< The input that is due.
    std::size_t m_position = 0; ///< The parameter that is.
    std::array<std::vector<char16_t>, 2> m_texts;
    std::size_t m_textCount = 0;
    const std::vector<char16_t> *m_length = nullptr; ///< The text of which the length is due.
    unsigned int m_count = untouched;
    bool m_isArray = false;
    void *m_occupant = nullptr;
};

template <auto function, class... Types>
Function describe(std::string_view name, unsigned int (*)(Types...))
{
    constexpr std::size_t texts = (0U + ... + std::is_same_v<Types, const unsigned short *>);
    constexpr std::size_t numbers = (0U + ... + std::is_same_v<Types, unsigned int>)-texts;
    return {name, sizeof...(Types), texts, numbers, [](const Call &call) {
                Parameters parameters(call);
                std::tuple<Types...> values;
                std::apply(
                    [&](Types &...value) {
                        (parameters.give(value), ...);
                        parameters.finish(function(value...));
                        (parameters.take(value), ...);
                    },
                    values);
                return std::move(parameters.answer);
            }};
}

} // namespace

Call::Call(std::string_view line)
{
    if (line.size() > 2 && (line[0] == '-' || line[0] == '+')) {
        wrong = line[0];
        wrongParameter = static_cast<std::size_t>(line[1] - '0');
        line.remove_prefix(2);
    }
    for (std::size_t begin = 0; begin <= line.size();) {
        const std::size_t end = std::min(line.find('\t', begin), line.size());
        inputs.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    name = inputs.front();
    inputs.erase(inputs.begin());
}

const std::vector<Function> &functions()
{
#define TARNEL_DESCRIBE(name) describe<name>(#name, name),
    static const std::vector<Function> all{TARNEL_FUNCTIONS(TARNEL_DESCRIBE)};
    return all;
}

const Function *findFunction(std::string_view name)
{
    const auto found = std::ranges::find(functions(), name, &Function::name);
    return found == functions().end() ? nullptr : &*found;
}

void fail(std::string_view call, std::string_view reason)
{
    std::fprintf(stderr, "%s: %s\n", std::string(call).c_str(), std::string(reason).c_str());
    std::abort();
}

} // namespace fuzz
