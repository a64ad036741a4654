// A second process for QVUserDefaultsTest: it reads and writes a store's file
// the way another instance of an application would.
//
//   QVUserDefaultsHelper set <file> <key> <string-value>   exit 0 when written
//   QVUserDefaultsHelper get <file> <key>                  prints the value; exit 1 when absent
//   QVUserDefaultsHelper remove <file> <key>               exit 0 when written
//   QVUserDefaultsHelper path                              prints the standard store's file

#include <QVKit/Platform/QVFormat.h>
#include <QVKit/Platform/QVUserDefaults.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

void print(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

int usage()
{
    std::fputs("usage: QVUserDefaultsHelper set <file> <key> <value> | get <file> <key> | "
               "remove <file> <key> | path\n",
               stderr);
    return 64;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty())
        return usage();
    const QString command = arguments.at(0);

    if (command == u"path"_s && arguments.size() == 1) {
        print(QVUserDefaults::standardUserDefaults()->filePath());
        return 0;
    }
    if (command == u"get"_s && arguments.size() == 3) {
        QVUserDefaults defaults(arguments.at(1));
        const QVariant value = defaults.objectForKey(arguments.at(2));
        if (!value.isValid())
            return 1;
        print(value.typeId() == QMetaType::QString ? value.toString() : QVDescription(value));
        return 0;
    }
    if (command == u"set"_s && arguments.size() == 4) {
        QVUserDefaults defaults(arguments.at(1));
        defaults.setObject(arguments.at(3), arguments.at(2));
        return defaults.synchronize() ? 0 : 2;
    }
    if (command == u"remove"_s && arguments.size() == 3) {
        QVUserDefaults defaults(arguments.at(1));
        defaults.removeObjectForKey(arguments.at(2));
        return defaults.synchronize() ? 0 : 2;
    }
    return usage();
}
