#include "bench/process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace bench {

namespace {

/// What the other end writes until it closes the pipe.
std::string readAll(int file)
{
    std::string text;
    std::array<char, 256> part{};
    for (ssize_t size = 0; (size = ::read(file, part.data(), part.size())) > 0;)
        text.append(part.data(), static_cast<std::size_t>(size));
    return text;
}

} // namespace

std::string outputOfOwnProcess(const std::vector<std::string> &arguments)
{
    std::vector<std::string> words = arguments;
    words.insert(words.begin(), "tarnel_bench");
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        ::execv("/proc/self/exe", pointers.data());
        std::_Exit(EXIT_FAILURE);
    }
    ::close(ends[1]);
    std::string output = child > 0 ? readAll(ends[0]) : std::string();
    ::close(ends[0]);
    int status = 0;
    if (child <= 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error("a process of its own fails");
    return output;
}

} // namespace bench
