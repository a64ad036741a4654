// qvkit: shows the library at work from the command line.

#include "QVKitTool.h"

#include <QtCore/QCoreApplication>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    return QVKitTool().run(QCoreApplication::arguments());
}
