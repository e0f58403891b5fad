#include "contract.h"

#include "cache.h"

#include <tarnel/diagnostics.h>
#include <tarnel/tarnel.h>

#include <algorithm>

namespace fuzz {

namespace {

bool isRead(std::string_view name)
{
    return name.starts_with("get");
}

/// Whether the record has parents, at which the call looks when it has written.
bool looksAtParents(std::string_view name)
{
    return name == "updateSection" || name == "updateZone";
}

/// Whether the call hands back the one record that it has stored, by reading it again.
bool handsBackWhatItStored(std::string_view name)
{
    return name.starts_with("update") || name == "addDevice" || name == "addEvent";
}

bool isOfContract(const Function &function, unsigned int code, Found found)
{
    const std::string_view name = function.name;
    const bool isAboutAddress = name.ends_with("ServerIp");
    switch (code) {
    case TARNEL_SUCCESS:
        return true;
    case TARNEL_INVALID_REQUEST:
        return function.texts == 1 && !isAboutAddress;
    case TARNEL_INVALID_ARGUMENT:
        return function.texts > 0 && !isAboutAddress;
    case TARNEL_NOT_FOUND:
        return (isRead(name) && !isAboutAddress) || name.starts_with("delete") || name == "addEvents" ||
               name == "removeAffectFlag" || name == "updateDeviceFw" ||
               (found == Found::SpoiledFile && handsBackWhatItStored(name)); // A spoiled index hides it.
    case TARNEL_PARENT_NOT_FOUND:
        return looksAtParents(name);
    case TARNEL_READ_FAILED:
        return found == Found::SpoiledFile &&
               (isRead(name) || name.starts_with("delete") || name == "removeAffectFlag" || looksAtParents(name));
    case TARNEL_WRITE_FAILED:
        return found == Found::SpoiledFile && !isRead(name);
    default:
        return false;
    }
}

/// How many transactions a call with this answer commits, at least and at most.
std::pair<std::size_t, std::size_t> commitsOf(std::string_view name, unsigned int code)
{
    if (isRead(name))
        return {0, 0};
    if (code == TARNEL_SUCCESS || code == TARNEL_PARENT_NOT_FOUND || (code == TARNEL_NOT_FOUND && name == "addEvents"))
        return {1, 1};
    const bool isOpen = (code == TARNEL_READ_FAILED && looksAtParents(name)) ||
                        (code == TARNEL_NOT_FOUND && handsBackWhatItStored(name));
    return {0, isOpen ? 1 : 0};
}

/// Reads again what a call has handed out as it is stored now.
void compareWithStored(const Function &function, const Answer &answer)
{
    const auto read = [](const Function *reader, std::string_view line) {
        return callChecked(*reader, Call(line), Found::SoundFile).records;
    };
    std::string kind(function.name.substr(function.name.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ")));
    if (kind.ends_with("Fw"))
        kind.resize(kind.size() - 2);
    const Function *const reader = findFunction("get" + kind);
    if (function.name == "addEvents") {
        const std::vector<std::string> stored = read(reader, "getEvents\t0\t4294967295");
        for (const std::string &record : answer.records) {
            const bool hasTime = record.find("|-|") != record.find('|');
            if (hasTime && std::ranges::find(stored, record) == stored.end())
                fail(function.name, record + " is not stored so");
        }
    } else if (reader != nullptr && reader->numbers == 1) {
        const std::string &record = answer.records.front();
        const std::string id = record.substr(1, record.find('|') - 1);
        if (read(reader, std::string(reader->name) + "\t" + id) != answer.records)
            fail(function.name, record + " is not stored so");
    }
}

} // namespace

Answer callChecked(const Function &function, const Call &call, Found found)
{
    const std::size_t before = commits();
    Answer answer = function.call(call);
    const std::size_t committed = commits() - before;
    const auto [least, most] = commitsOf(function.name, answer.code);
    if (found == Found::NoCache ? answer.code != TARNEL_NOT_AVAILABLE
        : answer.isRefused      ? answer.code != TARNEL_INVALID_ARGUMENT
                                : !isOfContract(function, answer.code, found))
        fail(function.name, "code " + std::to_string(answer.code) + ", " + tarnelReason());
    if (committed < least || committed > most)
        fail(function.name,
             std::to_string(committed) + " commits and code " + std::to_string(answer.code) + ", " + tarnelReason());
    const bool isWrite = !isRead(function.name);
    if (found == Found::SoundFile && isWrite && answer.code == TARNEL_SUCCESS && !answer.records.empty())
        compareWithStored(function, answer);
    return answer;
}

} // namespace fuzz
