#pragma once

#include "controller/result.h"

#include <string>
#include <string_view>
#include <vector>

/// The library's reader of requests beside Qt's, for every kind of record and every function that reads one.
namespace oracle {

/// What an object in a request has, as far as it is read.
struct Shape {
    enum class Type { Number, Boolean, Text, Object, Objects, Numbers };

    struct Member {
        std::string_view key;
        Type type;
        bool isRequired = false;
        const Shape *object = nullptr; ///< Of an object, or of each item.
    };

    std::vector<Member> members;
};

/// What both made of a text.
struct Comparison {
    tarnelLib::Result expected;
    tarnelLib::Result actual;
    std::string expectedRecords; ///< Written out, if the text was accepted.
    std::string actualRecords;
    bool isSame;
};

/// A function of the request parser, for one kind.
struct Reading {
    std::string name;
    std::string_view before; ///< The request's text up to the object that is of the shape.
    std::string_view after;
    const Shape *shape;
    Comparison (*compare)(std::u16string_view text);
};

std::vector<Reading> readings();

} // namespace oracle
