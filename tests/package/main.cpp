#include <QVKit/Platform/QVFormat.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitVersion.h>

#include <cstdio>

int main()
{
    const QString line = QVFormat("QVKit %s %@", QVKIT_VERSION_STRING, QVRangeToString(QVMakeRange(1, 2)));
    std::puts(line.toUtf8().constData());
    return 0;
}
