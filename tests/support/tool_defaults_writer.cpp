// Writes numbered keys into a user defaults store as fast as it can and prints each number once
// its write has returned. The durability test kills it at random moments.
//   tool_defaults_writer STORE FIRST
// With "entries", each number is instead one change of a dictionary kept as rows, as the image
// cache's save makes it: 8 of 16 entries written, holding the number, the other 8 removed.
//   tool_defaults_writer STORE FIRST entries
#include "foundation/UserDefaults.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const bool entries = argc == 4 && qstrcmp(argv[3], "entries") == 0;
    if (argc != 3 && !entries) {
        std::fprintf(stderr, "usage: tool_defaults_writer STORE FIRST [entries]\n");
        return 2;
    }
    UserDefaults defaults(QString::fromLocal8Bit(argv[1]));
    if (!defaults.isOpen()) {
        std::fprintf(stderr, "%s\n", qPrintable(defaults.errorString()));
        return 1;
    }
    for (qint64 i = QByteArray(argv[2]).toLongLong(); entries; ++i) {
        QVariantMap written;
        QStringList removed;
        for (int k = 0; k < 16; ++k) {
            const QString name = QStringLiteral("entry-%1").arg((i + k) % 16);
            if (k < 8)
                written.insert(name, QVariantMap{{QStringLiteral("n"), i}, {QStringLiteral("image"), QByteArray(40000, char('a' + i % 26))}});
            else
                removed.append(name);
        }
        if (!defaults.setEntriesForKey(QStringLiteral("image cache"), written, removed)) {
            std::fprintf(stderr, "%s\n", qPrintable(defaults.errorString()));
            return 1;
        }
        std::printf("%lld\n", static_cast<long long>(i));
        std::fflush(stdout);
    }
    for (qint64 i = QByteArray(argv[2]).toLongLong();; ++i) {
        // Alternate small values with larger ones so that some writes span several pages.
        const QVariant value = (i % 7 == 0) ? QVariant(QByteArray(20000 + int(i % 5000), char('a' + i % 26)))
                                            : QVariant(QVariantMap{{QStringLiteral("n"), i}});
        if (!defaults.setObject(value, QStringLiteral("key-%1").arg(i))) {
            std::fprintf(stderr, "%s\n", qPrintable(defaults.errorString()));
            return 1;
        }
        std::printf("%lld\n", static_cast<long long>(i));
        std::fflush(stdout);
    }
}
