#include "daemon/tomlreader.h"

// The library recurses into what nests; both bounds keep that from filling the stack.
#define TOML_EXCEPTIONS 0
#define TOML_ENABLE_FORMATTERS 0
#define TOML_MAX_NESTED_VALUES 8

// What the library asserts a file can break, as "[$" does: its own errors come after, unless the
// compiler takes the assertion for granted.
#undef NDEBUG
#define TOML_ASSERT(expression) static_assert(true)

#include <QRegularExpression>
#include <QTextCodec>
#include <algorithm>
#include <toml++/toml.h>

namespace outpost
{

namespace
{
constexpr int maxBytes = 1024 * 1024;
constexpr int maxLineBytes = 2000;
constexpr int maxDepth = TOML_MAX_NESTED_VALUES;

QString textOf(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
}

int lineOf(const toml::source_region &region)
{
    return static_cast<int>(region.begin.line);
}

TomlOutcome refused(int line, const QString &error)
{
    return {{}, line, error};
}

bool isUtf8(const QByteArray &bytes)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

// TOML has none, and none should get into the log.
bool holdsControls(QByteArray line)
{
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    return std::any_of(line.begin(), line.end(), [](char byte) {
        return (byte >= 0 && byte < ' ' && byte != '\t') || byte == '\x7f';
    });
}

// What is wrong with the bytes before anything is read from them.
TomlOutcome checkLines(const QByteArray &document)
{
    if (document.size() > maxBytes) {
        return refused(0, QStringLiteral("the file is larger than 1 MiB; it must be smaller"));
    }
    int number = 0;
    for (const QByteArray &line : document.split('\n')) {
        ++number;
        if (line.size() > maxLineBytes) {
            return refused(number, QStringLiteral("the line is longer than %1 bytes; it must be "
                                                  "shorter, lists may go on in the next line")
                                       .arg(maxLineBytes));
        }
        if (holdsControls(line)) {
            return refused(number, QStringLiteral("the line holds a control character; it must "
                                                  "hold none but tabs"));
        }
        if (!isUtf8(line)) {
            return refused(number, QStringLiteral("this is not UTF-8; the file must be saved as "
                                                  "UTF-8"));
        }
    }
    return {};
}

TomlType typeOf(const toml::node &node)
{
    switch (node.type()) {
    case toml::node_type::string:
        return TomlType::Text;
    case toml::node_type::integer:
        return TomlType::Whole;
    case toml::node_type::floating_point:
        return TomlType::Number;
    case toml::node_type::boolean:
        return TomlType::Flag;
    case toml::node_type::array:
        return TomlType::List;
    case toml::node_type::table:
        return TomlType::Table;
    default:
        return TomlType::Time;
    }
}

TomlValue valueOf(const toml::node &node, int line, int depth);

QVector<TomlValue> itemsOf(const toml::array &array, int depth)
{
    QVector<TomlValue> items;
    for (const toml::node &item : array) {
        items.append(valueOf(item, lineOf(item.source()), depth));
    }
    return items;
}

// A value stands where its key does.
QVector<TomlMember> membersOf(const toml::table &table, int depth)
{
    QVector<TomlMember> members;
    for (const auto &[key, value] : table) {
        members.append({textOf(key.str()), valueOf(value, lineOf(key.source()), depth)});
    }
    return members;
}

TomlValue valueOf(const toml::node &node, int line, int depth)
{
    TomlValue value;
    value.type = typeOf(node);
    value.line = line;
    value.text = textOf(node.value_or(std::string_view()));
    value.whole = node.value_exact<int64_t>().value_or(0);
    value.number = node.value<double>().value_or(0);
    value.flag = node.value_exact<bool>().value_or(false);
    if (depth < maxDepth && node.is_array()) {
        value.items = itemsOf(*node.as_array(), depth + 1);
    }
    if (depth < maxDepth && node.is_table()) {
        value.members = membersOf(*node.as_table(), depth + 1);
    }
    return value;
}

// "Error while parsing string: encountered end-of-file", but without digits of the document.
QString reasonOf(const toml::parse_error &error)
{
    const QString reason = textOf(error.description());
    if (reason.contains(QLatin1String("representable"))) {
        return QStringLiteral("the number is too large");
    }
    return reason.left(1).toLower() + reason.mid(1);
}

// "port: " of a line such as "port = ..."; empty where no plain key begins the line.
QString keyIn(const QByteArray &line)
{
    static const QRegularExpression pattern(QStringLiteral("\\A\\s*([A-Za-z0-9_-]{1,40})\\s*="));
    const QRegularExpressionMatch match = pattern.match(QString::fromUtf8(line));
    return match.hasMatch() ? match.captured(1) + QStringLiteral(": ") : QString();
}

TomlOutcome unreadable(const QByteArray &document, const toml::parse_error &error)
{
    const int line = lineOf(error.source());
    return refused(line, keyIn(document.split('\n').value(line - 1)) +
                             QStringLiteral("this is not TOML, %1; right are lines such as "
                                            "port = 8073, host = \"kiwi.example\" and "
                                            "[[receiver]]")
                                 .arg(reasonOf(error)));
}
} // namespace

TomlOutcome readToml(const QByteArray &document)
{
    const TomlOutcome checked = checkLines(document);
    if (!checked.error.isEmpty()) {
        return checked;
    }
    const toml::parse_result parsed =
        toml::parse(std::string_view(document.constData(), static_cast<size_t>(document.size())));
    if (!parsed) {
        return unreadable(document, parsed.error());
    }
    return {valueOf(parsed.table(), 1, 0), 0, QString()};
}

} // namespace outpost
