// Searches for a sequence of calls in which the library crashes, leaks, or departs from its contract.
//
// An input is a program of one call a line (see functions.h), among which "exit" and "launch" stand for themselves and
// "check" lets SQLite check the file. It starts with a running cache that holds nothing.

#include "cache.h"
#include "contract.h"
#include "makecall.h"

#include <tarnel/tarnel.h>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t maximum);

namespace {

using fuzz::Generator;

constexpr std::array<std::string_view, 3> commands = {"exit", "launch", "check"};

const fuzz::Function &pickFunction(Generator &generator)
{
    const std::vector<fuzz::Function> &all = fuzz::functions();
    std::size_t picked = generator.below(all.size());
    while (all[picked].texts != 1 && !generator.oneIn(3)) // What requests store, they have read back.
        picked = generator.below(all.size());
    return all[picked];
}

std::string makeLine(const fuzz::Function &function, Generator &generator)
{
    if (generator.oneIn(60))
        return std::string(commands.at(generator.below(commands.size())));
    std::string line;
    if (function.parameters > 0 && generator.oneIn(30))
        line = (generator.oneIn(2) ? "-" : "+") + std::to_string(generator.below(function.parameters));
    return line + fuzz::makeCall(function, generator);
}

/// A program of few functions, so that they meet each other's records.
std::vector<std::string> makeProgram(Generator &generator)
{
    std::vector<const fuzz::Function *> functions(1 + generator.below(5));
    std::ranges::generate(functions, [&] { return &pickFunction(generator); });
    std::vector<std::string> lines(1 + generator.below(12));
    std::ranges::generate(lines, [&] { return makeLine(*functions[generator.below(functions.size())], generator); });
    return lines;
}

std::vector<std::string> linesOf(std::string_view text)
{
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.emplace_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

/// Changes the inputs of a call.
void changeInputs(std::string &line, Generator &generator)
{
    const std::size_t begin = line.find('\t') + 1;
    if (generator.oneIn(2)) {
        generator.damage(line, begin);
        return;
    }
    const std::size_t length = line.size() - begin;
    line.resize(line.size() + 64);
    auto *const inputs = reinterpret_cast<std::uint8_t *>(line.data()) + begin;
    line.resize(begin + LLVMFuzzerMutate(inputs, length, length + 64));
}

void change(std::vector<std::string> &lines, Generator &generator)
{
    const std::size_t place = generator.below(lines.size() + 1);
    const auto position = lines.begin() + static_cast<std::ptrdiff_t>(place);
    const std::size_t kind = generator.below(8);
    if (kind == 0 || place == lines.size())
        lines.insert(position, makeLine(pickFunction(generator), generator));
    else if (kind == 1)
        lines.erase(position);
    else if (kind == 2)
        lines.insert(position, std::string(lines[generator.below(lines.size())]));
    else if (kind == 3 || position->find('\t') == std::string::npos)
        *position = makeLine(pickFunction(generator), generator);
    else
        changeInputs(*position, generator);
}

void carryOut(fuzz::Cache &cache, std::string_view line)
{
    const fuzz::Call call(line);
    if (call.name == "check") {
        fuzz::checkIntegrity();
    } else if (call.name == "exit" && cache.isRunning()) {
        cache.exit();
    } else if (call.name == "launch" && !cache.isRunning()) {
        if (cache.launch() != TARNEL_SUCCESS)
            fuzz::fail("launchCache", "another result than 0 for a sound file");
    } else if (const fuzz::Function *const function = fuzz::findFunction(call.name)) {
        callChecked(*function, call, cache.isRunning() ? fuzz::Found::SoundFile : fuzz::Found::NoCache);
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maximum,
                                               unsigned int seed)
{
    Generator generator(seed);
    std::vector<std::string> lines = linesOf({reinterpret_cast<const char *>(data), size});
    if (lines.empty() || generator.oneIn(4)) {
        lines = makeProgram(generator);
    } else {
        do
            change(lines, generator);
        while (generator.oneIn(2));
    }
    // A launch takes as long as twenty programs, and what it reaches is soon reached.
    if (!generator.oneIn(50))
        std::erase_if(lines, [](const std::string &line) { return std::ranges::count(commands, line) != 0; });
    std::string text;
    for (const std::string &line : lines)
        text += line + '\n';
    text.resize(std::min(text.size(), maximum));
    std::ranges::copy(text, data);
    return text.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static fuzz::Cache &cache = *new fuzz::Cache;
    static const bool isMade = cache.launch() == TARNEL_DATABASE_CREATED;
    static std::size_t commitsWhenEmpty = fuzz::commits();
    if (!isMade || getState() != TARNEL_STATE_RUNNING)
        fuzz::fail("launchCache", "no new file");
    for (const std::string &line : linesOf({reinterpret_cast<const char *>(data), size}))
        carryOut(cache, line);
    if (!cache.isRunning())
        carryOut(cache, "launch");
    if (fuzz::commits() != commitsWhenEmpty) {
        carryOut(cache, "clearAll");
        carryOut(cache, "setServerIp");
        commitsWhenEmpty = fuzz::commits();
    }
    return 0;
}
