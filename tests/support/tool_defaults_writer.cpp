// Writes numbered keys into a user defaults store as fast as it can and prints each number once
// its write has returned. The durability test kills it at random moments.
//   tool_defaults_writer STORE FIRST
#include "foundation/UserDefaults.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: tool_defaults_writer STORE FIRST\n");
        return 2;
    }
    UserDefaults defaults(QString::fromLocal8Bit(argv[1]));
    if (!defaults.isOpen()) {
        std::fprintf(stderr, "%s\n", qPrintable(defaults.errorString()));
        return 1;
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
