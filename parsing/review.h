#pragma once

#include "parsing/shape.h"

/// A second, slow reading of a request, which knows where it is: of one that was refused, to say why; and of one that
/// was carried out and holds what looks like a mistake, to say so.
namespace tarnelLib::controller {

/// What stands under "D": `{"items": [record, ...]}`, a record that names its parents, or the identifiers of one.
enum class Form { Items, Record, Identifiers };

/// A request as the client gave it.
struct Request {
    const char *function; ///< The exported one.
    std::u16string_view text;
    Form form;
    const Shape &(*shape)();
};

/// Notes the first mistake for which a request was refused.
void noteRefusal(const Request &request) noexcept;

/// Counts what looks like a mistake, and logs what has not been logged since the launch.
void warnOf(const Request &request, const Oddities &oddities) noexcept;

} // namespace tarnelLib::controller
