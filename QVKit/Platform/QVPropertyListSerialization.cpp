// Placeholder: being written.
#include "QVKit/Platform/QVPropertyListSerialization.h"

QVariant QVPropertyListSerialization::propertyListWithData(const QByteArray &, QVError *) { return {}; }
QVariant QVPropertyListSerialization::propertyListWithDevice(QIODevice *, QVError *) { return {}; }
QVariant QVPropertyListSerialization::propertyListWithContentsOfFile(const QString &, QVError *) { return {}; }
QByteArray QVPropertyListSerialization::dataWithPropertyList(const QVariant &, QVError *) { return {}; }
bool QVPropertyListSerialization::writePropertyList(const QVariant &, QIODevice *, QVError *) { return false; }
bool QVPropertyListSerialization::writePropertyListToFile(const QVariant &, const QString &, QVError *) { return false; }
bool QVPropertyListSerialization::propertyListIsValid(const QVariant &) { return false; }
