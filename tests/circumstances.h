#pragma once

#include "child.h"
#include "faults/faultvfs.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// Bad circumstances, each of which is met at one request after the other.
namespace client {

enum Times { Once = 1, Lasting = 2, Both = 3 };

struct Circumstance {
    std::string name;
    Times times;
    std::function<void(faults::Faults)> begin; ///< On the thread that is to meet it.
    std::function<bool()> end;                 ///< On that thread, too. Tells whether a request has failed.
    std::optional<unsigned int> launch = {};   ///< What a launch gives where all requests fail, and the file is clean.
    int density = 8;                           ///< So many requests are all tried, of later ones such a part.
};

/// Disks that fail, for all threads or for one.
std::vector<Circumstance> failingDisks(std::thread::id thread = {});

/// Memory that is short: the library's own, and SQLite's.
std::vector<Circumstance> shortMemory();

/// Makes the first request fail, then the second one, and so on, and all from there on; until a run does not get that
/// far, or a test has failed.
///
/// `run` is given the request, and tells whether it has got there. TARNEL_DENSITY sets another density for all.
void tryEach(const Circumstance &circumstance, const std::function<bool(faults::Faults)> &run);

/// Counts what was tried, also in children, and tells it in the end.
class Tally
{
public:
    explicit Tally(std::string what) : m_what(std::move(what)) {}
    Tally(const Tally &) = delete;
    Tally &operator=(const Tally &) = delete;
    ~Tally();

    void count(bool isTried = true) { *m_count += isTried ? 1 : 0; }

private:
    std::string m_what;
    SharedNumber m_count;
};

} // namespace client
