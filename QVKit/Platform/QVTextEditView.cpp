#include "QVKit/Platform/QVTextEditView.h"

#include "QVKit/Platform/QVAssert.h"
#include "QVKit/Platform/QVLog.h"
#include "QVKit/Platform/QVRange.h"
#include "QVKit/Platform/QVTextDocumentUndoManager.h"

#include <QtCore/QPointer>
#include <QtCore/QScopedValueRollback>
#include <QtGui/QBrush>
#include <QtGui/QColor>
#include <QtGui/QPalette>
#include <QtGui/QTextBlock>
#include <QtGui/QTextCharFormat>
#include <QtGui/QTextCursor>
#include <QtGui/QTextDocument>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QTextEdit>

using namespace Qt::StringLiterals;

namespace {

// The format property that carries the attributes a QTextCharFormat cannot
// show, as a QVariantMap.
constexpr int CarriedAttributesProperty = QTextFormat::UserProperty + 0x5156;
// Marks the extra selections that show this view's further selected ranges,
// so that extra selections of others (a current-line highlight) are kept.
constexpr int ExtraSelectionMarkerProperty = QTextFormat::UserProperty + 0x5157;

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
        return true;
    default:
        return false;
    }
}

// Shows the attribute through the format's own property; false when the value
// is not of the kind that property takes.
bool setShownAttribute(QTextCharFormat &format, const QString &name, const QVariant &value)
{
    if (name == QVFontFamilyAttributeName) {
        if (value.typeId() != QMetaType::QString)
            return false;
        format.setFontFamilies(QStringList{value.toString()});
    } else if (name == QVFontPointSizeAttributeName) {
        if (!isNumber(value))
            return false;
        format.setFontPointSize(value.toDouble());
    } else if (name == QVFontWeightAttributeName) {
        if (!isNumber(value))
            return false;
        format.setFontWeight(value.toInt());
    } else if (name == QVFontItalicAttributeName) {
        if (value.typeId() != QMetaType::Bool)
            return false;
        format.setFontItalic(value.toBool());
    } else if (name == QVUnderlineAttributeName) {
        if (value.typeId() != QMetaType::Bool)
            return false;
        format.setFontUnderline(value.toBool());
    } else if (name == QVForegroundColorAttributeName) {
        if (value.typeId() != QMetaType::QColor)
            return false;
        format.setForeground(QBrush(value.value<QColor>()));
    } else if (name == QVBackgroundColorAttributeName) {
        if (value.typeId() != QMetaType::QColor)
            return false;
        format.setBackground(QBrush(value.value<QColor>()));
    } else {
        return false;
    }
    return true;
}

void clearShownAttribute(QTextCharFormat &format, const QString &name)
{
    if (name == QVFontFamilyAttributeName) {
        format.clearProperty(QTextFormat::FontFamilies);
        format.clearProperty(QTextFormat::FontFamily);
    } else if (name == QVFontPointSizeAttributeName) {
        format.clearProperty(QTextFormat::FontPointSize);
    } else if (name == QVFontWeightAttributeName) {
        format.clearProperty(QTextFormat::FontWeight);
    } else if (name == QVFontItalicAttributeName) {
        format.clearProperty(QTextFormat::FontItalic);
    } else if (name == QVUnderlineAttributeName) {
        format.clearProperty(QTextFormat::TextUnderlineStyle);
        format.clearProperty(QTextFormat::FontUnderline);
    } else if (name == QVForegroundColorAttributeName) {
        format.clearProperty(QTextFormat::ForegroundBrush);
    } else if (name == QVBackgroundColorAttributeName) {
        format.clearProperty(QTextFormat::BackgroundBrush);
    }
}

void setCarriedAttributes(QTextCharFormat &format, const QVariantMap &carried)
{
    if (carried.isEmpty())
        format.clearProperty(CarriedAttributesProperty);
    else
        format.setProperty(CarriedAttributesProperty, carried);
}

void addAttributeToFormat(QTextCharFormat &format, const QString &name, const QVariant &value)
{
    QVariantMap carried = format.property(CarriedAttributesProperty).toMap();
    if (setShownAttribute(format, name, value)) {
        carried.remove(name);
    } else {
        clearShownAttribute(format, name);
        carried.insert(name, value);
    }
    setCarriedAttributes(format, carried);
}

void removeAttributeFromFormat(QTextCharFormat &format, const QString &name)
{
    clearShownAttribute(format, name);
    QVariantMap carried = format.property(CarriedAttributesProperty).toMap();
    if (carried.remove(name) > 0)
        setCarriedAttributes(format, carried);
}

QTextCharFormat formatFromAttributes(const QVTextAttributes &attributes)
{
    QTextCharFormat format;
    for (auto it = attributes.cbegin(); it != attributes.cend(); ++it)
        addAttributeToFormat(format, it.key(), it.value());
    return format;
}

QVTextAttributes attributesFromFormat(const QTextCharFormat &format)
{
    QVTextAttributes attributes;
    if (format.hasProperty(QTextFormat::FontFamilies)) {
        const QStringList families = format.property(QTextFormat::FontFamilies).toStringList();
        if (!families.isEmpty())
            attributes.insert(QVFontFamilyAttributeName, families.constFirst());
    } else if (format.hasProperty(QTextFormat::FontFamily)) {
        attributes.insert(QVFontFamilyAttributeName, format.stringProperty(QTextFormat::FontFamily));
    }
    if (format.hasProperty(QTextFormat::FontPointSize))
        attributes.insert(QVFontPointSizeAttributeName, format.doubleProperty(QTextFormat::FontPointSize));
    if (format.hasProperty(QTextFormat::FontWeight))
        attributes.insert(QVFontWeightAttributeName, format.intProperty(QTextFormat::FontWeight));
    if (format.hasProperty(QTextFormat::FontItalic))
        attributes.insert(QVFontItalicAttributeName, format.boolProperty(QTextFormat::FontItalic));
    if (format.hasProperty(QTextFormat::TextUnderlineStyle))
        attributes.insert(QVUnderlineAttributeName,
                          format.underlineStyle() != QTextCharFormat::NoUnderline);
    else if (format.hasProperty(QTextFormat::FontUnderline))
        attributes.insert(QVUnderlineAttributeName, format.boolProperty(QTextFormat::FontUnderline));
    if (format.hasProperty(QTextFormat::ForegroundBrush))
        attributes.insert(QVForegroundColorAttributeName, format.foreground().color());
    if (format.hasProperty(QTextFormat::BackgroundBrush))
        attributes.insert(QVBackgroundColorAttributeName, format.background().color());
    const QVariantMap carried = format.property(CarriedAttributesProperty).toMap();
    for (auto it = carried.cbegin(); it != carried.cend(); ++it)
        attributes.insert(it.key(), it.value());
    return attributes;
}

// QTextCursor::insertText turns "\r\n" into one block separator; each of these
// characters becomes a separator of its own here, so that every inserted code
// unit takes exactly one document position.
QString withBlockSeparators(QString text)
{
    for (QChar &character : text) {
        const char16_t unit = character.unicode();
        if (unit == u'\r' || unit == QChar::ParagraphSeparator || unit == 0xFDD0 || unit == 0xFDD1)
            character = u'\n';
    }
    return text;
}

struct FormatSegment
{
    int position;
    int length;
    QTextCharFormat format;
    QString text;
};

// The document's characters that string() reports as '\n': block separators
// and the frame markers of tables.
QString withNewlines(QString text)
{
    for (QChar &character : text) {
        const char16_t unit = character.unicode();
        if (unit == QChar::ParagraphSeparator || unit == 0xFDD0 || unit == 0xFDD1)
            character = u'\n';
    }
    return text;
}

} // namespace

/**
 * The text storage over a QTextDocument. Every operation is an edit block of
 * its own, nested inside the block of an open editing pass.
 */
class QVTextDocumentStorage final : public QVTextStorage
{
public:
    explicit QVTextDocumentStorage(QTextDocument *document)
        : m_document(document)
        , m_blockCursor(document)
    {
    }

    bool isEditing() const { return m_editingLevel > 0; }

    QString string() const override
    {
        if (!m_document)
            return QString();
        // toPlainText() would turn no-break spaces and line separators into
        // other characters; the raw text keeps every character but the block
        // separators, and maps one to one onto document positions.
        return withNewlines(m_document->toRawText());
    }

    quint64 length() const override { return m_document ? quint64(m_document->characterCount() - 1) : 0; }

    QVAttributedString attributedSubstringFromRange(QVRange range) const override
    {
        QVAttributedString result;
        const quint64 textLength = length();
        const quint64 start = qMin(range.location, textLength);
        const quint64 end = start + qMin(range.length, textLength - start);
        if (start == end)
            return result;
        // Text from the fragments, not from string(): reading a short range
        // stays cheap in a long document.
        for (const FormatSegment &segment : segments(int(start), int(end)))
            result.appendAttributedString(
                QVAttributedString(withNewlines(segment.text), attributesFromFormat(segment.format)));
        return result;
    }

    void beginEditing() override
    {
        ++m_passLevel;
        ++m_editingLevel;
        m_blockCursor.beginEditBlock();
    }

    void endEditing() override
    {
        if (m_passLevel == 0) {
            QVLog("%s: no editing pass is open. Fix this.", "QVTextStorage::endEditing");
            return;
        }
        --m_passLevel;
        // Signals sent while the block closes still count as this storage's edit.
        m_blockCursor.endEditBlock();
        --m_editingLevel;
    }

    void replaceCharactersInRange(QVRange range, const QVAttributedString &string) override
    {
        if (!checkRange(range, "QVTextStorage::replaceCharactersInRange"))
            return;
        EditScope scope(this);
        QTextCursor cursor = selectingCursor(range);
        cursor.removeSelectedText();
        const QString text = string.string();
        string.enumerateAttributes(QVMakeRange(0, string.length()), {},
                                   [&](const QVTextAttributes &attributes, QVRange stretch, bool *) {
                                       cursor.insertText(withBlockSeparators(text.mid(qsizetype(stretch.location),
                                                                                      qsizetype(stretch.length))),
                                                         formatFromAttributes(attributes));
                                   });
    }

    void replaceCharactersInRange(QVRange range, const QString &string) override
    {
        if (!checkRange(range, "QVTextStorage::replaceCharactersInRange"))
            return;
        // Plain text takes the format of the first replaced character, or of
        // the one before an insertion point (the one after at the very start).
        QTextCharFormat format;
        const int at = range.length > 0 || range.location == 0 ? int(range.location) : int(range.location) - 1;
        if (quint64(at) < length())
            format = segments(at, at + 1).value(0).format;
        EditScope scope(this);
        QTextCursor cursor = selectingCursor(range);
        cursor.removeSelectedText();
        if (!string.isEmpty())
            cursor.insertText(withBlockSeparators(string), format);
    }

    void setAttributes(const QVTextAttributes &attributes, QVRange range) override
    {
        if (!checkRange(range, "QVTextStorage::setAttributes") || range.length == 0)
            return;
        EditScope scope(this);
        selectingCursor(range).setCharFormat(formatFromAttributes(attributes));
    }

    void addAttributes(const QVTextAttributes &attributes, QVRange range) override
    {
        if (!checkRange(range, "QVTextStorage::addAttributes"))
            return;
        changeFormats(range, [&](QTextCharFormat &format) {
            for (auto it = attributes.cbegin(); it != attributes.cend(); ++it)
                addAttributeToFormat(format, it.key(), it.value());
        });
    }

    void addAttribute(const QString &name, const QVariant &value, QVRange range) override
    {
        if (!checkRange(range, "QVTextStorage::addAttribute"))
            return;
        changeFormats(range, [&](QTextCharFormat &format) { addAttributeToFormat(format, name, value); });
    }

    void removeAttribute(const QString &name, QVRange range) override
    {
        if (!checkRange(range, "QVTextStorage::removeAttribute"))
            return;
        changeFormats(range, [&](QTextCharFormat &format) { removeAttributeFromFormat(format, name); });
    }

private:
    struct EditScope
    {
        explicit EditScope(QVTextDocumentStorage *storage)
            : storage(storage)
        {
            ++storage->m_editingLevel;
            storage->m_blockCursor.beginEditBlock();
        }
        ~EditScope()
        {
            storage->m_blockCursor.endEditBlock();
            --storage->m_editingLevel;
        }
        QVTextDocumentStorage *storage;
    };

    bool checkRange(QVRange range, const char *operation) const
    {
        if (!m_document)
            return false;
        const quint64 textLength = length();
        if (range.location > textLength || range.length > textLength - range.location) {
            QVLog("%s: range %@ out of bounds for length %llu. Fix this.", operation, QVRangeToString(range),
                  textLength);
            return false;
        }
        return true;
    }

    QTextCursor selectingCursor(QVRange range) const
    {
        QTextCursor cursor(m_document);
        cursor.setPosition(int(range.location));
        cursor.setPosition(int(QVMaxRange(range)), QTextCursor::KeepAnchor);
        return cursor;
    }

    // The formats over [start, end): the fragments of each block, and each
    // block separator with the format stored for it, which the block after it
    // reports as its char format.
    QList<FormatSegment> segments(int start, int end) const
    {
        QList<FormatSegment> result;
        for (QTextBlock block = m_document->findBlock(start); block.isValid() && block.position() < end;
             block = block.next()) {
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                const QTextFragment fragment = it.fragment();
                const int from = qMax(start, fragment.position());
                const int to = qMin(end, fragment.position() + fragment.length());
                if (from < to)
                    result.append({from, to - from, fragment.charFormat(),
                                   fragment.text().mid(from - fragment.position(), to - from)});
            }
            const QTextBlock next = block.next();
            const int separator = block.position() + block.length() - 1;
            if (next.isValid() && separator >= start && separator < end)
                result.append({separator, 1, next.charFormat(), QString(u'\n')});
        }
        return result;
    }

    // Rewrites each stretch's own format, so that properties this storage
    // does not know (anchors, spacing) stay as they were.
    void changeFormats(QVRange range, const std::function<void(QTextCharFormat &)> &change)
    {
        if (range.length == 0)
            return;
        EditScope scope(this);
        for (FormatSegment &segment : segments(int(range.location), int(QVMaxRange(range)))) {
            change(segment.format);
            selectingCursor(QVMakeRange(quint64(segment.position), quint64(segment.length)))
                .setCharFormat(segment.format);
        }
    }

    QPointer<QTextDocument> m_document;
    QTextCursor m_blockCursor;
    int m_passLevel = 0;
    int m_editingLevel = 0;
};

class QVTextEditViewPrivate
{
public:
    explicit QVTextEditViewPrivate(QTextDocument *document)
        : document(document)
        , storage(document)
    {
    }

    // Calls the function with whichever widget the view is over; the fallback
    // when the widget is gone.
    template <typename Result, typename Function>
    Result withEditor(Result fallback, Function function) const
    {
        if (textEdit)
            return function(textEdit.data());
        if (plainTextEdit)
            return function(plainTextEdit.data());
        return fallback;
    }

    QList<QTextEdit::ExtraSelection> othersExtraSelections() const
    {
        QList<QTextEdit::ExtraSelection> selections =
            withEditor(QList<QTextEdit::ExtraSelection>(), [](auto *editor) { return editor->extraSelections(); });
        selections.removeIf([](const QTextEdit::ExtraSelection &selection) {
            return selection.format.hasProperty(ExtraSelectionMarkerProperty);
        });
        return selections;
    }

    void setExtraSelections(const QList<QTextEdit::ExtraSelection> &selections)
    {
        withEditor(0, [&](auto *editor) {
            editor->setExtraSelections(selections);
            return 0;
        });
    }

    QPointer<QTextEdit> textEdit;
    QPointer<QPlainTextEdit> plainTextEdit;
    QPointer<QTextDocument> document;
    QVTextDocumentStorage storage;
    QVTextDocumentUndoManager *undoManager = nullptr;
    // The further selected ranges; the cursors follow the document's edits.
    QList<QTextCursor> extraCursors;
    bool settingSelection = false;
};

QVTextEditView::QVTextEditView(QTextEdit *textEdit, QObject *parent)
    : QVTextView(parent)
{
    QV_ASSERT(textEdit);
    d = std::make_unique<QVTextEditViewPrivate>(textEdit->document());
    d->textEdit = textEdit;
    d->undoManager = new QVTextDocumentUndoManager(textEdit->document(), this);
    registerWidget(textEdit);
    connect(textEdit, &QTextEdit::cursorPositionChanged, this, [this] {
        if (!d->settingSelection && !d->storage.isEditing())
            dropExtraSelections();
    });
}

QVTextEditView::QVTextEditView(QPlainTextEdit *plainTextEdit, QObject *parent)
    : QVTextView(parent)
{
    QV_ASSERT(plainTextEdit);
    d = std::make_unique<QVTextEditViewPrivate>(plainTextEdit->document());
    d->plainTextEdit = plainTextEdit;
    d->undoManager = new QVTextDocumentUndoManager(plainTextEdit->document(), this);
    registerWidget(plainTextEdit);
    connect(plainTextEdit, &QPlainTextEdit::cursorPositionChanged, this, [this] {
        if (!d->settingSelection && !d->storage.isEditing())
            dropExtraSelections();
    });
}

QVTextEditView::~QVTextEditView()
{
    // The highlight of ranges nobody reports any more would confuse the user.
    dropExtraSelections();
}

QTextEdit *QVTextEditView::textEdit() const
{
    return d->textEdit;
}

QPlainTextEdit *QVTextEditView::plainTextEdit() const
{
    return d->plainTextEdit;
}

QTextDocument *QVTextEditView::document() const
{
    return d->document;
}

bool QVTextEditView::isEditable() const
{
    return d->withEditor(false, [](auto *editor) { return !editor->isReadOnly(); });
}

void QVTextEditView::setEditable(bool editable)
{
    // Qt resets the interaction flags when read-only changes; selectability is
    // a setting of its own here.
    const bool selectable = isSelectable();
    d->withEditor(0, [&](auto *editor) {
        editor->setReadOnly(!editable);
        return 0;
    });
    setSelectable(selectable);
}

static constexpr Qt::TextInteractionFlags SelectableFlags = Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard;

bool QVTextEditView::isSelectable() const
{
    return d->withEditor(false, [](auto *editor) { return bool(editor->textInteractionFlags() & SelectableFlags); });
}

void QVTextEditView::setSelectable(bool selectable)
{
    d->withEditor(0, [&](auto *editor) {
        const Qt::TextInteractionFlags flags = editor->textInteractionFlags();
        editor->setTextInteractionFlags(selectable ? flags | SelectableFlags : flags & ~SelectableFlags);
        return 0;
    });
}

QVRangeList QVTextEditView::selectedRanges() const
{
    const QTextCursor cursor = d->withEditor(QTextCursor(), [](auto *editor) { return editor->textCursor(); });
    if (cursor.isNull())
        return {QVMakeRange(0, 0)};
    QVRangeList ranges;
    ranges.reserve(d->extraCursors.size() + 1);
    ranges.append(
        QVMakeRange(quint64(cursor.selectionStart()), quint64(cursor.selectionEnd() - cursor.selectionStart())));
    for (const QTextCursor &extra : d->extraCursors)
        ranges.append(
            QVMakeRange(quint64(extra.selectionStart()), quint64(extra.selectionEnd() - extra.selectionStart())));
    return ranges;
}

void QVTextEditView::setSelectedRanges(const QVRangeList &ranges)
{
    if (ranges.isEmpty()) {
        QVLog("%s: a selection needs at least one range. Fix this.", "QVTextEditView::setSelectedRanges");
        return;
    }
    QWidget *editor = widget();
    if (!editor || !d->document)
        return;
    const quint64 length = d->storage.length();
    auto cursorFor = [&](QVRange range) {
        const quint64 location = qMin(range.location, length);
        QTextCursor cursor(d->document);
        cursor.setPosition(int(location));
        cursor.setPosition(int(location + qMin(range.length, length - location)), QTextCursor::KeepAnchor);
        return cursor;
    };

    const QScopedValueRollback<bool> guard(d->settingSelection, true);
    const QTextCursor first = cursorFor(ranges.constFirst());
    d->withEditor(0, [&](auto *textWidget) {
        textWidget->setTextCursor(first);
        return 0;
    });

    QTextCharFormat highlight;
    highlight.setBackground(editor->palette().brush(QPalette::Highlight));
    highlight.setForeground(editor->palette().brush(QPalette::HighlightedText));
    highlight.setProperty(ExtraSelectionMarkerProperty, true);
    QList<QTextEdit::ExtraSelection> selections = d->othersExtraSelections();
    d->extraCursors.clear();
    for (qsizetype i = 1; i < ranges.size(); ++i) {
        const QTextCursor cursor = cursorFor(ranges.at(i));
        d->extraCursors.append(cursor);
        selections.append(QTextEdit::ExtraSelection{cursor, highlight});
    }
    d->setExtraSelections(selections);
}

QVTextStorage *QVTextEditView::textStorage()
{
    return &d->storage;
}

QVUndoManager *QVTextEditView::undoManager()
{
    return d->undoManager;
}

QWidget *QVTextEditView::widget() const
{
    return d->withEditor<QWidget *>(nullptr, [](auto *editor) -> QWidget * { return editor; });
}

void QVTextEditView::dropExtraSelections()
{
    if (d->extraCursors.isEmpty())
        return;
    d->extraCursors.clear();
    d->setExtraSelections(d->othersExtraSelections());
}
