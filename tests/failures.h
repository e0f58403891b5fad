#pragma once

#include "client.h"

/// What failures look like from outside: the steps that may fail, and the log.
namespace client {

using Lines = std::vector<std::string>;

/// Qt's debug log, or what the library warns of in requests, since it was last looked at.
enum class Log { Debug, Requests };
Lines takeLog(Log log = Log::Debug);

/// A step of a function, as `failures.txt` has it.
struct Step {
    std::string function;
    std::string verb; ///< What makes it fail, together with the table.
    std::string table;
    std::string code; ///< That of the function then.
    std::string message;
    std::string text; ///< The driver's; empty if it is not listed.
};

std::vector<Step> stepsIn(const Case &lines);
/// The steps of a function in their order.
std::vector<Step> stepsOf(const std::string &function);

/// Expects the log to be that of one of these steps, failing, and gives the driver's text; it may be any if none is
/// given.
std::string expectLogOf(const std::vector<Step> &steps, const std::string &text = "");

} // namespace client
