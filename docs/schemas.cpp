/// Writes a JSON Schema for each function that takes a request, from the field lists of the library: schemas HEADER
/// DIRECTORY. What is said of a field comes from tarnel.h.
///
/// The schemas say what is meant, where the library is lenient: a flag is 0 or 1, a number is stored as it stands
/// there.
#include "entities/event.h"
#include "entities/organization.h"
#include "entities/site.h"
#include "parsing/requestparser.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>

#include <cstdio>
#include <limits>

#include <tarnel/kinds.hpp>

namespace {

using namespace tarnelLib::controller;

QString toString(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

/// What the header says at a member: by the name of its structure and its key.
using Comments = QHash<QString, QString>;

Comments commentsOf(const QString &header)
{
    static const QRegularExpression line(
        QStringLiteral(R"re(^typedef struct (\w+)|/\*\*< ("\w+"): (?:\w+[.,;] ?)?(.*?)\.? \*/)re"),
        QRegularExpression::MultilineOption);
    Comments comments;
    QString structure;
    for (auto lines = line.globalMatch(header); lines.hasNext();) {
        const QRegularExpressionMatch found = lines.next();
        if (!found.captured(1).isEmpty())
            structure = found.captured(1);
        else
            comments.insert(structure + found.captured(2), found.captured(3));
    }
    return comments;
}

QJsonObject whole(double least, double most)
{
    return {{"type", "integer"}, {"minimum", least}, {"maximum", most}};
}

/// An object of which some members are required.
QJsonObject object(const QJsonObject &members, const QJsonArray &required)
{
    return {{"type", "object"}, {"properties", members}, {"required", required}};
}

/// Writes the schemas of a kind's requests, each with all that it refers to.
class Writer
{
public:
    Writer(Comments comments, const QDir &directory) : m_comments(std::move(comments)), m_directory(directory) {}

    template <class Record>
    void writeKind()
    {
        using Functions = tarnel::Functions<ApiOf<Record>>;
        const QString list = toString(Schema<Record>::table);
        const QString name = nameOf<Record>();
        if constexpr (requires { Functions::add; })
            writeItems<Record>("add" + list);
        if constexpr (requires { Functions::addOne; })
            writeRecord<Record>("add" + name);
        if constexpr (requires { Functions::update; })
            writeRecord<Record>("update" + name);
        if constexpr (requires { Functions::remove; })
            writeIdentifiers<Record>("delete" + name);
    }

    template <class Record>
    void writeItems(const QString &function)
    {
        const QJsonObject items{{"type", "array"}, {"items", schemaOf<Record>()}, {"minItems", 1}};
        write(function, object({{"items", items}}, {"items"}));
    }

    /// A record that names its parents.
    template <class Record>
    void writeRecord(const QString &function)
    {
        write(function, recordOf<Record>(true));
    }

    template <class Record>
    void writeIdentifiers(const QString &function)
    {
        QJsonObject members;
        QJsonArray required;
        for (const std::string_view key : identifierKeys<Record>()) {
            members.insert(toString(key), schemaOf<quint32>());
            required.append(toString(key));
        }
        write(function, object(members, required));
    }

    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }

private:
    template <class Record>
    static QString nameOf()
    {
        return toString(Schema<Record>::table).chopped(1);
    }

    template <class Record>
    QJsonObject recordOf(bool namesParents)
    {
        QJsonObject members;
        QJsonArray required;
        QJsonArray choices; // Of keys for the identifier.
        const auto addIdentifier = [&](std::string_view key) {
            choices.append(QJsonObject{{"required", QJsonArray{toString(key)}}});
        };
        forEachField<Record>([&]<class Row>(const Row &row) {
            if constexpr (isParentKey<Row>) {
                // Elsewhere the enclosing record gives it, whatever stands here.
                if (namesParents)
                    required.append(toString(row.requestKey));
                members.insert(toString(row.requestKey), namesParents ? QJsonValue(schemaOf<quint32>()) : true);
            } else if constexpr (requires { row.key; }) {
                if (row.key.empty())
                    return;
                using Member = std::remove_cvref_t<decltype(std::declval<Record>().*row.member)>;
                members.insert(toString(row.key), described<Record, Member>(row.key));
                if constexpr (is<Row, Id>) {
                    addIdentifier(row.key);
                    if (row.keys.alternativeKey.empty() || row.keys.alternativeKey == row.key)
                        return;
                    members.insert(toString(row.keys.alternativeKey), schemaOf<quint32>());
                    addIdentifier(row.keys.alternativeKey);
                }
            }
        });
        QJsonObject schema = object(members, required);
        if (!choices.isEmpty())
            schema.insert("anyOf", choices);
        schema.insert("additionalProperties", false);
        return schema;
    }

    template <class Record, class Member>
    QJsonObject described(std::string_view key)
    {
        QJsonObject schema = schemaOf<Member>();
        const QString comment =
            m_comments.value(nameOf<Record>() + QLatin1Char('"') + toString(key) + QLatin1Char('"'));
        if (!comment.isEmpty())
            schema.insert("description", comment);
        return schema;
    }

    /// Of what a member of a record holds.
    template <class Value>
    QJsonObject schemaOf()
    {
        if constexpr (requires { typename Value::value_type; }) {
            QJsonObject item = schemaOf<typename Value::value_type>();
            if constexpr (std::is_same_v<Value, std::optional<typename Value::value_type>>)
                return item;
            return {{"type", "array"}, {"items", item}};
        } else if constexpr (requires { Schema<Value>::fields; }) {
            const QString name = nameOf<Value>();
            if (!m_definitions.contains(name))
                m_definitions.insert(name, recordOf<Value>(false));
            return {{"$ref", "#/$defs/" + name}};
        } else if constexpr (std::is_same_v<Value, Text>) {
            return {{"type", "string"}};
        } else if constexpr (std::is_same_v<Value, bool>) {
            return {{"enum", QJsonArray{0, 1}}};
        } else if constexpr (std::is_floating_point_v<Value>) {
            return {{"type", "number"}};
        } else {
            // The numbers of JSON are exact up to 2^53.
            constexpr double exact = 9007199254740992.0;
            return whole(static_cast<double>(std::numeric_limits<Value>::min()),
                         std::min(static_cast<double>(std::numeric_limits<Value>::max()), exact));
        }
    }

    void write(const QString &function, const QJsonObject &content)
    {
        QJsonObject schema = object({{"D", content}}, {"D"});
        schema.insert("$schema", "https://json-schema.org/draft/2020-12/schema");
        schema.insert("title", "A request to " + function);
        if (!m_definitions.isEmpty())
            schema.insert("$defs", std::exchange(m_definitions, {}));
        QSaveFile file(m_directory.filePath(function + ".schema.json"));
        const QByteArray text = QJsonDocument(schema).toJson();
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit())
            m_hasFailed = true;
    }

    Comments m_comments;
    QDir m_directory;
    QJsonObject m_definitions; ///< What the request that is written refers to.
    bool m_hasFailed = false;
};

} // namespace

int main(int argc, char **argv)
{
    QFile header(argc == 3 ? QString::fromLocal8Bit(argv[1]) : QString());
    if (!header.open(QIODevice::ReadOnly)) {
        std::fputs("schemas HEADER DIRECTORY\n", stderr);
        return 1;
    }
    const QDir directory(QString::fromLocal8Bit(argv[2]));
    Writer writer(commentsOf(QString::fromUtf8(header.readAll())), directory);
    writer.writeKind<Locale>();
    writer.writeKind<Domain>();
    writer.writeKind<User>();
    writer.writeKind<Organization>();
    writer.writeKind<Contractor>();
    writer.writeKind<Contract>();
    writer.writeKind<Device>();
    writer.writeKind<Section>();
    writer.writeKind<Zone>();
    writer.writeKind<Site>();
    writer.writeKind<Event>();
    // What the names of the others do not tell.
    writer.writeRecord<Device>("updateDeviceFw");
    writer.writeIdentifiers<Event>("removeAffectFlag");
    return writer.hasFailed() ? 1 : 0;
}
