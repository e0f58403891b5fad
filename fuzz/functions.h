#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The exported functions that work on the records, as the public header declares them.
namespace fuzz {

/// A call as a line of text: the function's name and its inputs, with tabs between them. In front of the name may stand
/// what is wrong with the call: "-2" passes null for the third parameter, or a length that no text has; "+0" passes an
/// output that is not empty.
struct Call {
    explicit Call(std::string_view line);

    std::string_view name;
    std::vector<std::string_view> inputs; ///< Texts, as bytes of an input, and numbers.
    char wrong = ' ';                     ///< Or '-', or '+'.
    std::size_t wrongParameter = 0;
};

struct Answer {
    unsigned int code = 0;
    std::vector<std::string> records; ///< What was handed out, and has been released: "(7|'ru'|-)", or "'a text'".
    bool isRefused = false;           ///< Whether an argument was one for which nothing may be done.
};

struct Function {
    std::string_view name;
    std::size_t parameters;
    std::size_t texts;   ///< How many texts it is given.
    std::size_t numbers; ///< How many numbers it is given, behind the texts.
    Answer (*call)(const Call &call);
};

const std::vector<Function> &functions();
/// Null if there is none of this name.
const Function *findFunction(std::string_view name);

/// Ends the program, as a finding.
[[noreturn]] void fail(std::string_view call, std::string_view reason);

} // namespace fuzz
