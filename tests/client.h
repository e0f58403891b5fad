#pragma once

#include <tarnel/tarnel.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

/// A client of the library, as the tests need one: everything goes through the public header.
namespace client {

namespace api = tarnelLib::api;

/// What a call is given: a text with its length, made from UTF-8, or a number.
class Argument
{
public:
    Argument(const std::string &utf8);
    Argument(const char *utf8) : Argument(std::string(utf8)) {}
    Argument(unsigned int value) : number(value) {}
    Argument(int value) : Argument(static_cast<unsigned int>(value)) {}

    [[nodiscard]] const unsigned short *units() const
    {
        return reinterpret_cast<const unsigned short *>(m_units.data());
    }
    [[nodiscard]] unsigned int length() const { return static_cast<unsigned int>(m_units.size()); }

    unsigned int number = 0;

private:
    std::u16string m_units;
};

/// A text that the library handed out, as UTF-8.
std::string utf8(const unsigned short *text);

/// Waits until `condition` holds; false if that takes some ten seconds.
bool waitUntil(const std::function<bool()> &condition);

/// An empty directory that is the current one for as long as the object lives.
class TemporaryDirectory
{
public:
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;
    ~TemporaryDirectory();

private:
    std::filesystem::path m_former = std::filesystem::current_path();
    std::filesystem::path m_path;
};

/// A test in an empty directory.
class DirectoryTest : public testing::Test
{
    TemporaryDirectory m_directory;
};

/// A cache that runs on a thread of its own, in the current directory, until the object goes.
class RunningCache
{
public:
    RunningCache();
    RunningCache(const RunningCache &) = delete;
    RunningCache &operator=(const RunningCache &) = delete;
    ~RunningCache() { exitCache(); }

private:
    std::jthread m_thread{launchCache};
};

/// Threads that do something again and again until the object goes.
class Busy
{
public:
    Busy(int threads, const std::function<void()> &work);
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;
    ~Busy() { m_isOver = true; }

private:
    std::atomic<bool> m_isOver = false;
    std::vector<std::jthread> m_threads;
};

/// A number from the environment, so that one binary serves both a quick run and a thorough one.
unsigned int setting(const char *name, unsigned int otherwise);

/// Prints how often something was tried, for whoever adds such figures up.
void printTried(const std::string &what, std::uintmax_t times);

/// A file in `data`.
std::string readData(const std::string &name);

/// Lines of such a file with the name that stands in brackets above them.
struct Case {
    std::string name;
    std::vector<std::string> lines;
};
std::vector<Case> readCases(const std::string &name);
void PrintTo(const Case &shown, std::ostream *stream);

} // namespace client
