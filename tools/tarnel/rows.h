#pragma once

#include "storage/sqltext.h"

namespace tool {

/// Reads the rows of a kind as they are stored: all columns, in the order of the list of fields.
template <class Record>
std::string selectRows()
{
    namespace lib = tarnelLib::controller;
    lib::sql::Selection selection{.table = lib::Schema<Record>::table};
    for (const lib::ModelField &field : lib::modelFields<Record>)
        selection.columns.push_back(field.column());
    return lib::sql::select(selection);
}

} // namespace tool
