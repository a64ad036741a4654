#include "QVKit/Platform/QVHeadlessTextView.h"

#include "QVKit/Platform/QVLog.h"
#include "QVKit/Platform/QVUndoManager.h"

namespace {

// Clips a range to a text of the given length.
QVRange clippedRange(QVRange range, quint64 length)
{
    const quint64 location = qMin(range.location, length);
    return QVMakeRange(location, qMin(range.length, length - location));
}

} // namespace

/** The storage of a headless view: its attributed string, with passes mapped onto undo groups. */
class QVHeadlessTextStorage final : public QVTextStorage
{
public:
    QVHeadlessTextStorage(QVAttributedString &text, QVUndoManager *undoManager)
        : m_text(text)
        , m_undoManager(undoManager)
    {
    }

    QString string() const override { return m_text.string(); }
    quint64 length() const override { return m_text.length(); }
    QVAttributedString attributedSubstringFromRange(QVRange range) const override
    {
        return m_text.attributedSubstringFromRange(range);
    }

    void beginEditing() override
    {
        if (m_editingLevel++ == 0)
            m_undoManager->beginUndoGrouping();
    }
    void endEditing() override
    {
        if (m_editingLevel == 0) {
            QVLog("%s: no editing pass is open. Fix this.", "QVTextStorage::endEditing");
            return;
        }
        if (--m_editingLevel == 0)
            m_undoManager->endUndoGrouping();
    }

    void replaceCharactersInRange(QVRange range, const QVAttributedString &string) override
    {
        m_text.replaceCharactersInRange(range, string);
    }
    void replaceCharactersInRange(QVRange range, const QString &string) override
    {
        m_text.replaceCharactersInRange(range, string);
    }
    void setAttributes(const QVTextAttributes &attributes, QVRange range) override
    {
        m_text.setAttributes(attributes, range);
    }
    void addAttributes(const QVTextAttributes &attributes, QVRange range) override
    {
        m_text.addAttributes(attributes, range);
    }
    void addAttribute(const QString &name, const QVariant &value, QVRange range) override
    {
        m_text.addAttribute(name, value, range);
    }
    void removeAttribute(const QString &name, QVRange range) override { m_text.removeAttribute(name, range); }

private:
    QVAttributedString &m_text;
    QVUndoManager *m_undoManager;
    int m_editingLevel = 0;
};

class QVHeadlessTextViewPrivate
{
public:
    QVHeadlessTextViewPrivate(QVHeadlessTextView *view, const QVAttributedString &initialText)
        : text(initialText)
        , undoManager(new QVUndoManager(view))
        , storage(text, undoManager)
    {
    }

    // Records the current text and selection; undoing puts them back and records
    // the state it replaced, so undo and redo alternate through snapshots.
    void registerSnapshot(QVHeadlessTextView *view)
    {
        undoManager->registerUndo([this, view, snapshot = text, snapshotSelection = selection] {
            registerSnapshot(view);
            text = snapshot;
            selection = snapshotSelection;
            view->didChangeText();
        });
    }

    QVAttributedString text;
    QVRangeList selection{QVMakeRange(0, 0)};
    bool editable = true;
    bool selectable = true;
    // Owned by the view as its child, so its closures never outlive this object.
    QVUndoManager *undoManager;
    QVHeadlessTextStorage storage;
};

QVHeadlessTextView::QVHeadlessTextView(const QVAttributedString &text, QObject *parent)
    : QVTextView(parent)
    , d(std::make_unique<QVHeadlessTextViewPrivate>(this, text))
{
}

QVHeadlessTextView::QVHeadlessTextView(const QString &text, QObject *parent)
    : QVHeadlessTextView(QVAttributedString(text), parent)
{
}

QVHeadlessTextView::~QVHeadlessTextView()
{
    // The manager's closures refer to d; they go first.
    delete d->undoManager;
}

bool QVHeadlessTextView::isEditable() const
{
    return d->editable;
}

void QVHeadlessTextView::setEditable(bool editable)
{
    d->editable = editable;
}

bool QVHeadlessTextView::isSelectable() const
{
    return d->selectable;
}

void QVHeadlessTextView::setSelectable(bool selectable)
{
    d->selectable = selectable;
}

QVRangeList QVHeadlessTextView::selectedRanges() const
{
    // Storage edits made outside the modifier may have shortened the text since
    // the selection was set.
    const quint64 length = d->text.length();
    QVRangeList ranges = d->selection;
    for (QVRange &range : ranges)
        range = clippedRange(range, length);
    return ranges;
}

void QVHeadlessTextView::setSelectedRanges(const QVRangeList &ranges)
{
    if (ranges.isEmpty()) {
        QVLog("%s: a selection needs at least one range. Fix this.", "QVHeadlessTextView::setSelectedRanges");
        return;
    }
    const quint64 length = d->text.length();
    d->selection.clear();
    d->selection.reserve(ranges.size());
    for (const QVRange &range : ranges)
        d->selection.append(clippedRange(range, length));
}

QVTextStorage *QVHeadlessTextView::textStorage()
{
    return &d->storage;
}

QVUndoManager *QVHeadlessTextView::undoManager()
{
    return d->undoManager;
}

bool QVHeadlessTextView::shouldChangeTextInRanges(const QVRangeList &ranges,
                                                  const std::optional<QStringList> &replacementStrings)
{
    if (!QVTextView::shouldChangeTextInRanges(ranges, replacementStrings))
        return false;
    if (d->undoManager->isUndoRegistrationEnabled())
        d->registerSnapshot(this);
    return true;
}

QVAttributedString QVHeadlessTextView::attributedString() const
{
    return d->text;
}

QString QVHeadlessTextView::string() const
{
    return d->text.string();
}

void QVHeadlessTextView::setAttributedString(const QVAttributedString &text)
{
    d->text = text;
    d->selection = {QVMakeRange(0, 0)};
}
