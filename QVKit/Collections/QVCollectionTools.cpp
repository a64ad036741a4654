#include "QVKit/Collections/QVCollectionTools.h"

#include "QVKit/Platform/QVLog.h"

#include <QtConcurrent/QtConcurrentMap>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QThread>

#include <numeric>

using namespace Qt::StringLiterals;
using QVCollectionDetail::Kind;

namespace {

Kind variantKind(const QVariant &value)
{
    const QMetaType type = value.metaType();
    if (type == QMetaType::fromType<QVariantList>())
        return Kind::Array;
    if (type == QMetaType::fromType<QVariantMap>() || type == QMetaType::fromType<QVariantHash>())
        return Kind::Dictionary;
    if (type == QMetaType::fromType<QVVariantSet>())
        return Kind::Set;
    return Kind::Invalid;
}

/**
 * Calls function with the collection the QVariant holds, as a const reference
 * and, when it will be edited, a pointer to the same object inside the
 * mutable QVariant (taken first, since detaching the QVariant moves it).
 */
template <typename Function>
QVariant withCollection(const QVariant &collection, QVariant *mutableCollection, Function &&function)
{
    auto call = [&]<typename C>(C *) -> QVariant {
        C *editable = mutableCollection ? static_cast<C *>(mutableCollection->data()) : nullptr;
        const C &view = editable ? *editable : *static_cast<const C *>(collection.constData());
        return function(view, editable);
    };
    const QMetaType type = collection.metaType();
    if (type == QMetaType::fromType<QVariantList>())
        return call(static_cast<QVariantList *>(nullptr));
    if (type == QMetaType::fromType<QVariantMap>())
        return call(static_cast<QVariantMap *>(nullptr));
    if (type == QMetaType::fromType<QVariantHash>())
        return call(static_cast<QVariantHash *>(nullptr));
    return call(static_cast<QVVariantSet *>(nullptr));
}

template <typename C>
QVariant toVariant(const QVCollectionResult<C> &result)
{
    if (result.identifiers) {
        if constexpr (QVCollectionDetail::Traits<C>::kind == Kind::Dictionary) {
            QVariantList keys;
            keys.reserve(result.identifiers->size());
            for (const auto &key : *result.identifiers)
                keys.append(QVariant::fromValue(key));
            return keys;
        } else {
            return QVariant::fromValue(*result.identifiers);
        }
    }
    if (result.objects)
        return QVariant::fromValue(*result.objects);
    return QVariant();
}

// Entries of one dictionary into another, whichever of the two map types each is.
template <typename Target>
void insertEntries(Target &target, const QVariant &entries)
{
    if (entries.metaType() == QMetaType::fromType<QVariantMap>()) {
        const QVariantMap &map = *static_cast<const QVariantMap *>(entries.constData());
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            target.insert(it.key(), it.value());
    } else {
        const QVariantHash &hash = *static_cast<const QVariantHash *>(entries.constData());
        for (auto it = hash.cbegin(); it != hash.cend(); ++it)
            target.insert(it.key(), it.value());
    }
}

} // namespace

// ---- Shared helpers of the algorithm ----------------------------------------------------------

namespace QVCollectionDetail {

Settings Settings::capture(quint64 mask, quint64 action)
{
    Settings settings;
    QVCollectionTools::getCollectionMatch(mask, &settings.empty, &settings.nonEmpty, &settings.null,
                                          &settings.nonNull, &settings.unique, &settings.duplicate,
                                          &settings.keepsFirst, &settings.keepsLast);
    QVCollectionTools::getCollectionAction(action, &settings.isReturn, &settings.isRemove);
    settings.testsEmptiness = settings.empty || settings.nonEmpty;
    settings.testsNull = settings.null || settings.nonNull;
    settings.testsUniqueness = settings.unique || settings.duplicate;
    settings.decrements = settings.testsUniqueness && (settings.keepsFirst || settings.keepsLast);
    return settings;
}

void logUnhandledAction()
{
    QVLog("Unhandled action in match block");
}

void logUnhandledCollectionType()
{
    QVLog("Unhandled collection type");
}

qsizetype concurrentChunkCount(qsizetype elementCount)
{
    // A few chunks per core even out chunks whose objects take longer to test.
    const qsizetype chunks = qsizetype(std::max(1, QThread::idealThreadCount())) * 4;
    return std::clamp<qsizetype>(chunks, 1, std::max<qsizetype>(elementCount, 1));
}

void runConcurrently(qsizetype chunkCount, const std::function<void(qsizetype)> &body)
{
    QList<qsizetype> chunks(chunkCount);
    std::iota(chunks.begin(), chunks.end(), qsizetype(0));
    QtConcurrent::blockingMap(chunks, [&body](qsizetype &chunk) { body(chunk); });
}

} // namespace QVCollectionDetail

// ---- Validators and getters ---------------------------------------------------------------------

bool QVCollectionTools::isValidCollectionType(const QVariant &collection)
{
    if (!collection.isValid())
        return false;
    if (variantKind(collection) != Kind::Invalid)
        return true;
    QVLog("CollectionType invalid. Collection: %@.", collection);
    return false;
}

bool QVCollectionTools::isValidCollectionType(const QVariant *collection)
{
    return collection && isValidCollectionType(*collection);
}

bool QVCollectionTools::isValidCollectionMatch(quint64 mask)
{
    if (mask == 0) {
        QVLog("CollectionMatch invalid. Cannot be empty.");
        return false;
    }
    auto both = [mask](quint64 a, quint64 b) { return (mask & a) && (mask & b); };
    if (both(QVCollectionMatchEmpty, QVCollectionMatchNonEmpty)) {
        QVLog("CollectionMatch invalid. Empty and Non-Empty are mutually exclusive.");
        return false;
    }
    if (both(QVCollectionMatchNull, QVCollectionMatchNonNull)) {
        QVLog("CollectionMatch invalid. Null and Non-Null are mutually exclusive.");
        return false;
    }
    if (both(QVCollectionMatchUnique, QVCollectionMatchDuplicate)) {
        QVLog("CollectionMatch invalid. Unique and Duplicate are mutually exclusive.");
        return false;
    }
    if (both(QVCollectionMatchKeepsFirstDuplicate, QVCollectionMatchKeepsLastDuplicate)) {
        QVLog("CollectionMatch invalid. KeepsFirstDuplicate and KeepsLastDuplicate are mutually exclusive.");
        return false;
    }
    return true;
}

void QVCollectionTools::getCollectionType(const QVariant &collection, bool *isArray, bool *isDictionary,
                                          bool *isSet, bool *isMutable)
{
    const Kind kind = variantKind(collection);
    if (isArray)
        *isArray = kind == Kind::Array;
    if (isDictionary)
        *isDictionary = kind == Kind::Dictionary;
    if (isSet)
        *isSet = kind == Kind::Set;
    if (isMutable)
        *isMutable = false;
}

void QVCollectionTools::getCollectionType(QVariant *collection, bool *isArray, bool *isDictionary, bool *isSet,
                                          bool *isMutable)
{
    const QVariant none;
    getCollectionType(collection ? *collection : none, isArray, isDictionary, isSet, nullptr);
    if (isMutable)
        *isMutable = collection && variantKind(*collection) != Kind::Invalid;
}

bool QVCollectionTools::isCollectionTypeSameAsCollectionType(const QVariant &a, const QVariant &b)
{
    // Validity is part of the type: two invalid objects agree.
    return variantKind(a) == variantKind(b);
}

bool QVCollectionTools::isValidAction(quint64 action, quint64 returnType, bool collectionIsMutable)
{
    if (action == QVCollectionActionReturn && returnType == QVCollectionReturnTypeNone) {
        QVLog("Return action cannot use return type of None.");
        return false;
    }
    if (action == QVCollectionActionRemove && !collectionIsMutable) {
        QVLog("Delete action requires mutable collection");
        return false;
    }
    return true;
}

bool QVCollectionTools::isValidAction(quint64 action, quint64 returnType, const QVariant &)
{
    return isValidAction(action, returnType, false);
}

bool QVCollectionTools::isValidAction(quint64 action, quint64 returnType, QVariant *collection)
{
    return isValidAction(action, returnType, collection && variantKind(*collection) != Kind::Invalid);
}

void QVCollectionTools::getCollectionMatch(quint64 mask, bool *matchEmptyObjects, bool *matchNonEmptyObjects,
                                           bool *matchNullObjects, bool *matchNonNullObjects,
                                           bool *matchUniqueObjects, bool *matchDuplicateObjects,
                                           bool *keepsFirstDuplicate, bool *keepsLastDuplicate)
{
    const struct
    {
        bool *flag;
        quint64 bit;
    } table[] = {
        {matchEmptyObjects, QVCollectionMatchEmpty},
        {matchNonEmptyObjects, QVCollectionMatchNonEmpty},
        {matchNullObjects, QVCollectionMatchNull},
        {matchNonNullObjects, QVCollectionMatchNonNull},
        {matchUniqueObjects, QVCollectionMatchUnique},
        {matchDuplicateObjects, QVCollectionMatchDuplicate},
        {keepsFirstDuplicate, QVCollectionMatchKeepsFirstDuplicate},
        {keepsLastDuplicate, QVCollectionMatchKeepsLastDuplicate},
    };
    for (const auto &entry : table) {
        if (entry.flag)
            *entry.flag = (mask & entry.bit) != 0;
    }
}

void QVCollectionTools::getCollectionAction(quint64 action, bool *actionReturn, bool *actionRemove)
{
    if (actionReturn)
        *actionReturn = action == QVCollectionActionReturn;
    if (actionRemove)
        *actionRemove = action == QVCollectionActionRemove;
}

void QVCollectionTools::getReturnType(quint64 returnType, bool *returnTypeNone, bool *returnTypeIdentifiers,
                                      bool *returnTypeObjectCollection)
{
    if (returnTypeNone)
        *returnTypeNone = returnType == QVCollectionReturnTypeNone;
    if (returnTypeIdentifiers)
        *returnTypeIdentifiers = returnType == QVCollectionReturnTypeIdentifiers;
    if (returnTypeObjectCollection)
        *returnTypeObjectCollection = returnType == QVCollectionReturnTypeObjectCollection;
}

// ---- The engine, heterogeneous face --------------------------------------------------------------

QVariant QVCollectionTools::enumerateCollection(const QVariant &collection, quint64 mask,
                                                const QVariant &comparison, quint64 action, quint64 returnType)
{
    return enumerateVariant(&collection, nullptr, mask, comparison, action, returnType);
}

QVariant QVCollectionTools::enumerateCollection(QVariant *collection, quint64 mask, const QVariant &comparison,
                                                quint64 action, quint64 returnType)
{
    return enumerateVariant(collection, collection, mask, comparison, action, returnType);
}

QVariant QVCollectionTools::enumerateVariant(const QVariant *collection, QVariant *mutableCollection,
                                             quint64 mask, const QVariant &comparison, quint64 action,
                                             quint64 returnType)
{
    if (!isValidCollectionType(collection))
        return {};
    if (!isValidCollectionMatch(mask))
        return {};
    const bool distinct = comparison.isValid() && &comparison != collection;
    if (distinct) {
        if (!isValidCollectionType(comparison))
            return {};
        if (!isCollectionTypeSameAsCollectionType(*collection, comparison))
            return {};
    }
    if (!isValidAction(action, returnType, mutableCollection != nullptr))
        return {};

    const QVCollectionDetail::Settings settings = QVCollectionDetail::Settings::capture(mask, action);
    // Only a removal edits the collection; anything else leaves the QVariant undetached.
    QVariant *editable = settings.isRemove ? mutableCollection : nullptr;
    return withCollection(*collection, editable, [&]<typename C>(const C &view, C *edited) -> QVariant {
        if (!distinct) {
            return toVariant(QVCollectionDetail::run<C, C>(view, edited, nullptr, settings, returnType));
        }
        return withCollection(comparison, nullptr, [&]<typename Comp>(const Comp &other, Comp *) -> QVariant {
            if constexpr (QVCollectionDetail::comparable<C, Comp>())
                return toVariant(QVCollectionDetail::run<C, Comp>(view, edited, &other, settings, returnType));
            else
                return QVariant(); // unreachable: the kinds were checked above
        });
    });
}

// ---- Wrappers, heterogeneous face ----------------------------------------------------------------

QVariant QVCollectionTools::identifiersWithObjectsMatching(const QVariant &collection, quint64 mask)
{
    return enumerateCollection(collection, mask, QVariant(), QVCollectionActionReturn,
                               QVCollectionReturnTypeIdentifiers);
}

QVariant QVCollectionTools::objectCollectionWithObjectsMatching(const QVariant &collection, quint64 mask)
{
    return enumerateCollection(collection, mask, QVariant(), QVCollectionActionReturn,
                               QVCollectionReturnTypeObjectCollection);
}

QVariant QVCollectionTools::identifiersWithObjectsMatching(const QVariant &collection, quint64 mask,
                                                           const QVariant &inCollection)
{
    return enumerateCollection(inCollection, mask, collection, QVCollectionActionReturn,
                               QVCollectionReturnTypeIdentifiers);
}

QVariant QVCollectionTools::objectCollectionWithObjectsMatching(const QVariant &collection, quint64 mask,
                                                                const QVariant &inCollection)
{
    return enumerateCollection(inCollection, mask, collection, QVCollectionActionReturn,
                               QVCollectionReturnTypeObjectCollection);
}

void QVCollectionTools::removeObjectsMatching(QVariant *collection, quint64 mask)
{
    enumerateCollection(collection, mask, QVariant(), QVCollectionActionRemove, QVCollectionReturnTypeNone);
}

void QVCollectionTools::removeObjectsMatching(const QVariant &collection, quint64 mask)
{
    enumerateCollection(collection, mask, QVariant(), QVCollectionActionRemove, QVCollectionReturnTypeNone);
}

void QVCollectionTools::removeDuplicateObjects(QVariant *collection)
{
    removeObjectsMatching(collection, RemoveDuplicateObjectsMatch);
}

void QVCollectionTools::removeDuplicateObjects(const QVariant &collection)
{
    removeObjectsMatching(collection, RemoveDuplicateObjectsMatch);
}

void QVCollectionTools::removeUnsanitizedObjects(QVariant *collection)
{
    removeObjectsMatching(collection, RemoveUnsanitizedObjectsMatch);
}

void QVCollectionTools::removeUnsanitizedObjects(const QVariant &collection)
{
    removeObjectsMatching(collection, RemoveUnsanitizedObjectsMatch);
}

void QVCollectionTools::addObjectsFromCollection(QVariant *target, const QVariant &source, quint64 mask)
{
    const QVariant none;
    const QVariant found = enumerateCollection(source, mask, target ? *target : none, QVCollectionActionReturn,
                                               QVCollectionReturnTypeObjectCollection);
    if (!found.isValid())
        return;
    const Kind targetKind = target ? variantKind(*target) : Kind::Invalid;
    const Kind foundKind = variantKind(found);
    if (targetKind != foundKind || targetKind == Kind::Invalid) {
        QVCollectionDetail::logUnhandledCollectionType();
        return;
    }
    switch (targetKind) {
    case Kind::Array:
        static_cast<QVariantList *>(target->data())
            ->append(*static_cast<const QVariantList *>(found.constData()));
        break;
    case Kind::Dictionary:
        if (target->metaType() == QMetaType::fromType<QVariantMap>())
            insertEntries(*static_cast<QVariantMap *>(target->data()), found);
        else
            insertEntries(*static_cast<QVariantHash *>(target->data()), found);
        break;
    case Kind::Set:
        static_cast<QVVariantSet *>(target->data())->unite(*static_cast<const QVVariantSet *>(found.constData()));
        break;
    case Kind::Invalid:
        break;
    }
}

void QVCollectionTools::addObjectsFromCollection(const QVariant &target, const QVariant &source, quint64 mask)
{
    const QVariant found = enumerateCollection(source, mask, target, QVCollectionActionReturn,
                                               QVCollectionReturnTypeObjectCollection);
    // An immutable target cannot take the objects.
    if (found.isValid())
        QVCollectionDetail::logUnhandledCollectionType();
}

void QVCollectionTools::addUniqueObjectsFromCollection(QVariant *target, const QVariant &source)
{
    addObjectsFromCollection(target, source, AddUniqueObjectsMatch);
}

void QVCollectionTools::addSanitizedObjectsFromCollection(QVariant *target, const QVariant &source)
{
    addObjectsFromCollection(target, source, AddSanitizedObjectsMatch);
}

// ---- JSON -----------------------------------------------------------------------------------------

QVariant QVCollectionTools::jsonCollection(const char *operation, const QString &string, quint64 options,
                                           QVError *error, QMetaType expectedType)
{
    const QString name = QString::fromLatin1(operation);
    if (string.isNull()) {
        QVLog("%@ responseData is nil", name);
        return {};
    }
    QByteArray data = string.toUtf8();
    QJsonParseError parseError{};
    QVariant object;
    if (options & QVJSONReadingFragmentsAllowed) {
        // QJsonDocument reads arrays and objects only: a lone value is read as
        // the one element of an array around it.
        data.prepend('[').append(']');
        const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
        if (parseError.error == QJsonParseError::NoError) {
            const QJsonArray array = document.array();
            if (array.size() == 1) {
                object = array.at(0).toVariant();
            } else {
                parseError.error = QJsonParseError::GarbageAtEnd;
                parseError.offset = 0;
            }
        } else {
            parseError.offset = std::max(0, parseError.offset - 1);
        }
    } else {
        const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
        if (parseError.error == QJsonParseError::NoError)
            object = document.isArray() ? QVariant(document.array().toVariantList())
                                        : QVariant(document.object().toVariantMap());
    }
    if (parseError.error != QJsonParseError::NoError && error) {
        const QString reason = u"%1 around byte %2."_s.arg(parseError.errorString()).arg(parseError.offset);
        *error = QVError(QVCocoaErrorDomain, QVPropertyListReadCorruptError,
                         QVariantMap{{QVDebugDescriptionErrorKey, reason}});
        QVLog("%@ JSONError: %@", name, *error);
        return {};
    }
    if (!object.isValid() || object.metaType() != expectedType) {
        QVLog("%@ object is not expectedClass %@", name, QString::fromLatin1(expectedType.name()));
        return {};
    }
    return object;
}

QVariant QVCollectionTools::collectionForJSONString(const QString &string, quint64 options, QVError *error,
                                                    QMetaType expectedType)
{
    return jsonCollection("QVCollectionTools::collectionForJSONString", string, options, error, expectedType);
}

std::optional<QVariantList> QVCollectionTools::arrayForJSONString(const QString &string, QVError *error)
{
    return arrayForJSONString(string, 0, error);
}

std::optional<QVariantList> QVCollectionTools::arrayForJSONString(const QString &string, quint64 options,
                                                                  QVError *error)
{
    const QVariant object = jsonCollection("QVCollectionTools::arrayForJSONString", string, options, error,
                                           QMetaType::fromType<QVariantList>());
    if (!object.isValid())
        return std::nullopt;
    return object.toList();
}

std::optional<QVariantMap> QVCollectionTools::dictionaryForJSONString(const QString &string, QVError *error)
{
    return dictionaryForJSONString(string, 0, error);
}

std::optional<QVariantMap> QVCollectionTools::dictionaryForJSONString(const QString &string, quint64 options,
                                                                      QVError *error)
{
    const QVariant object = jsonCollection("QVCollectionTools::dictionaryForJSONString", string, options, error,
                                           QMetaType::fromType<QVariantMap>());
    if (!object.isValid())
        return std::nullopt;
    return object.toMap();
}
