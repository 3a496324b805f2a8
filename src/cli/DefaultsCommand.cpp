#include "DefaultsCommand.h"

#include "foundation/CountedNoun.h"
#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"

#include <QFile>

namespace {

const char *kHelp =
    "Usage:\n"
    "  tessary-cli defaults read [KEY]     print the whole store, or one key, as an XML property list\n"
    "  tessary-cli defaults write KEY FILE set KEY to the value held in the property-list FILE ('-': standard input)\n"
    "  tessary-cli defaults delete KEY     remove KEY\n"
    "  tessary-cli defaults import FILE    merge the dictionary property list FILE into the store\n"
    "  tessary-cli defaults export FILE    write the whole store as one XML property list ('-': standard output);\n"
    "                                      a key whose stored value cannot be read is left out with a warning\n"
    "\nThe store is $TESSARY_DEFAULTS when set, else the one in Tessary's data folder.\n";

PropertyList::ReadResult readInput(const QString &path)
{
    if (path != QLatin1String("-"))
        return PropertyList::fromFile(path);
    QFile in;
    if (!in.open(stdin, QIODevice::ReadOnly)) {
        PropertyList::ReadResult r;
        r.error = QStringLiteral("standard input: cannot be read");
        return r;
    }
    return PropertyList::fromBytes(in.read(PropertyList::kMaxInputBytes + 1), QStringLiteral("standard input"));
}

int expectArgs(const QStringList &args, int count, CliContext &context)
{
    if (args.size() - 1 != count)
        return context.fail(QStringLiteral("defaults %1: expected %2\n\n%3")
                                .arg(args.first(), CountedNoun::text(count, QStringLiteral("argument"), QStringLiteral("arguments")),
                                     QLatin1String(kHelp)),
                            2);
    return 0;
}

// The stored key named on the command line: the key itself, or a key holding characters that
// XML cannot carry (kept by an older version) named as it is shown, with \u{XXXX} for them.
QString storedKey(const UserDefaults &defaults, const QString &named)
{
    const QStringList keys = defaults.allKeys();
    if (keys.contains(named))
        return named;
    for (const QString &key : keys) {
        if (UserDefaults::printableKey(key) == named)
            return key;
    }
    return named;
}

// The whole store as it can be written as XML, key by key, so that what is left out is named: a
// value that no longer reads, and a key or string XML cannot carry (kept by an older version),
// with the command that deletes it.
QVariantMap exportableValues(const UserDefaults &defaults, CliContext &context, const QString &verb)
{
    QVariantMap all;
    for (const QString &key : defaults.allKeys()) {
        const QVariant value = defaults.objectForKey(key);
        if (!value.isValid()) {
            context.err << "tessary-cli: defaults " << verb << ": warning: \"" << UserDefaults::printableKey(key)
                        << "\" left out: its stored value cannot be read\n";
            continue;
        }
        const QString reason = UserDefaults::unwritableReason(value, key);
        if (!reason.isEmpty()) {
            context.err << "tessary-cli: defaults " << verb << ": warning: left out: " << reason
                        << "; delete it with: tessary-cli defaults delete '" << UserDefaults::printableKey(key) << "'\n";
            continue;
        }
        all.insert(key, value);
    }
    return all;
}

} // namespace

int DefaultsCommand::run(const QStringList &args, CliContext &context)
{
    if (args.isEmpty() || CliContext::wantsHelp(args)) {
        (args.isEmpty() ? context.err : context.out) << kHelp;
        return args.isEmpty() ? 2 : 0;
    }
    const QString verb = args.first();
    static const QStringList verbs{QStringLiteral("read"), QStringLiteral("write"), QStringLiteral("delete"),
                                   QStringLiteral("import"), QStringLiteral("export")};
    if (!verbs.contains(verb))
        return context.fail(QStringLiteral("defaults: unknown action '%1'\n\n%2").arg(verb, QLatin1String(kHelp)), 2);

    UserDefaults defaults;
    if (!defaults.isOpen())
        return context.fail(defaults.errorString());

    if (verb == QLatin1String("read")) {
        if (args.size() > 2)
            return expectArgs(args, 1, context);
        QVariant value;
        if (args.size() == 2) {
            const QString key = storedKey(defaults, args[1]);
            value = defaults.objectForKey(key);
            if (!value.isValid())
                return context.fail(QStringLiteral("the key \"%1\" does not exist in %2").arg(args[1], defaults.filePath()));
            const QString reason = UserDefaults::unwritableReason(value, key);
            if (!reason.isEmpty())
                return context.fail(reason);
        } else {
            value = exportableValues(defaults, context, verb);
        }
        QString error;
        const QByteArray xml = PropertyList::toXml(value, &error);
        if (xml.isEmpty())
            return context.fail(error);
        context.out << QString::fromUtf8(xml);
        return 0;
    }
    if (verb == QLatin1String("write")) {
        if (int code = expectArgs(args, 2, context))
            return code;
        const PropertyList::ReadResult r = readInput(args[2]);
        if (!r.ok())
            return context.fail(r.error);
        if (!defaults.setObject(r.value, args[1]))
            return context.fail(defaults.errorString());
        return 0;
    }
    if (verb == QLatin1String("delete")) {
        if (int code = expectArgs(args, 1, context))
            return code;
        // Any key can be deleted, even one whose value no longer reads.
        const QString key = storedKey(defaults, args[1]);
        if (!defaults.allKeys().contains(key))
            return context.fail(QStringLiteral("the key \"%1\" does not exist in %2").arg(args[1], defaults.filePath()));
        if (!defaults.removeObject(key))
            return context.fail(defaults.errorString());
        return 0;
    }
    if (verb == QLatin1String("import")) {
        if (int code = expectArgs(args, 1, context))
            return code;
        const PropertyList::ReadResult r = readInput(args[1]);
        if (!r.ok())
            return context.fail(r.error);
        if (r.value.typeId() != QMetaType::QVariantMap)
            return context.fail(QStringLiteral("%1: the property list is a %2; a dictionary is needed to import")
                                    .arg(args[1], PropertyList::typeName(r.value)));
        if (!defaults.setValuesForKeys(r.value.toMap()))
            return context.fail(defaults.errorString());
        return 0;
    }
    // export
    if (int code = expectArgs(args, 1, context))
        return code;
    const QVariantMap all = exportableValues(defaults, context, verb);
    QString error;
    if (args[1] == QLatin1String("-")) {
        const QByteArray xml = PropertyList::toXml(all, &error);
        if (xml.isEmpty())
            return context.fail(error);
        context.out << QString::fromUtf8(xml);
        return 0;
    }
    if (!PropertyList::writeFile(args[1], all, PropertyList::Format::Xml, &error))
        return context.fail(error);
    return 0;
}
