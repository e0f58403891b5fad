#include "storage/database.h"
#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/masking.h"
#include "tools/tarnel/newfile.h"
#include "tools/tarnel/progress.h"
#include "tools/tarnel/query.h"
#include "tools/tarnel/records.h"
#include "tools/tarnel/rows.h"

namespace tool {

namespace {

struct RedactOptions {
    std::filesystem::path output;
};

void require(int code, sqlite3 *connection)
{
    if (code != SQLITE_OK && code != SQLITE_DONE)
        throw Obstacle(fmt::format("the new file cannot be written: {}", sqlite3_errmsg(connection)),
                       "name another place with -o");
}

/// Copies the rows of a kind, with what is personal masked.
template <class Record>
void copyRows(lib::Connection &from, sqlite3 *to)
{
    sqlite3_stmt *insert = nullptr;
    require(
        sqlite3_prepare_v2(to, lib::sql::insertOrReplace(lib::modelFields<Record>, 1).c_str(), -1, &insert, nullptr),
        to);
    const auto finalize = qScopeGuard([insert] { sqlite3_finalize(insert); });
    for (Query rows(from, selectRows<Record>() + " ORDER BY rowid"); rows.next();) {
        int column = 0;
        lib::forEachColumn<Record>([&]<class Row>(const Row &row) {
            sqlite3_value *const held = rows.row().cell(column++);
            switch (maskingOf<Record>(row)) {
            case Masking::Kept:
                sqlite3_bind_value(insert, column, held);
                break;
            case Masking::Text:
                bindMaskedText(insert, column, held);
                break;
            case Masking::Number:
                bindMaskedNumber(insert, column, held);
                break;
            case Masking::Coordinate:
                bindMaskedCoordinate(insert, column, held, rows.number(0));
                break;
            }
        });
        require(sqlite3_step(insert), to);
        sqlite3_reset(insert);
    }
}

void runRedact(Shared &shared, const RedactOptions &options)
{
    CacheFile cache(shared.file);
    cache.requireSound();
    if (std::filesystem::exists(options.output))
        throw Obstacle(fmt::format("{} is there already", options.output.string()),
                       "name a new file: -o redacted/CacheDb");
    NewFile file(options.output);
    {
        // Made anew, row by row: a copy would have the texts in the pages that deleted rows have left.
        SQLite::Database made(file.path(), SQLite::OPEN_READWRITE);
        lib::ReadMark unused([] {}); // Nobody reads beside it.
        lib::WriteConnection writer([] {}, unused);
        writer.attach(made.getHandle());
        const bool isMade = lib::Database::createTables(writer);
        require(isMade ? SQLITE_OK : SQLITE_ERROR, made.getHandle());
        made.exec("BEGIN");
        Progress progress;
        forEachKind([&]<class Record>(const lib::KindTable<Record> &) {
            progress.show(fmt::format("redacting {}", lib::Schema<Record>::table));
            copyRows<Record>(cache.connection(), made.getHandle());
        });
        for (Query index(cache.connection(),
                         fmt::format("SELECT sql FROM sqlite_master WHERE type = 'index' AND name = '{}Index'",
                                     lib::columnOf(&lib::Event::time)));
             index.next();)
            made.exec(std::string(index.bytes(0)));
        made.exec("COMMIT");
        std::optional<lib::Text> address;
        if (lib::Database::getServerIp(cache.connection(), address) && address) {
            const std::u16string masked = tarnel::utf16(maskText(tarnel::utf8(address->view())));
            require(lib::Database::setServerIp(writer, masked) ? SQLITE_OK : SQLITE_ERROR, made.getHandle());
        }
        writer.detach();
    }
    cache.assertUnchanged();
    file.finish();
}

} // namespace

void addRedact(CLI::App &app, Shared &shared)
{
    const auto options = std::make_shared<RedactOptions>();
    CLI::App *const command =
        app.add_subcommand("redact", "A new file of the same shape, in which texts, phones and coordinates are masked");
    addFile(*command, shared);
    command->add_option("-o,--output", options->output, "The new file")->required();
    command->callback([&shared, options] { runRedact(shared, *options); });
}

} // namespace tool
