#include "QVKit/Platform/QVTextView.h"

#include "QVKit/Platform/QVNotificationCenter.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

namespace {

// The widget's dynamic property naming the view made over it. It holds a plain
// QObject pointer: the view clears it when destroyed first, and the property
// goes with the widget when the widget is destroyed first.
constexpr char TextViewProperty[] = "_qv_textView";

} // namespace

QVTextStorage::~QVTextStorage() = default;

QVAttributedString QVTextStorage::attributedString() const
{
    return attributedSubstringFromRange(QVMakeRange(0, length()));
}

QVTextView::QVTextView(QObject *parent)
    : QObject(parent)
{
}

QVTextView::~QVTextView()
{
    if (m_registeredWidget && m_registeredWidget->property(TextViewProperty).value<QObject *>() == this)
        m_registeredWidget->setProperty(TextViewProperty, QVariant());
}

bool QVTextView::shouldChangeTextInRanges(const QVRangeList &ranges,
                                          const std::optional<QStringList> &replacementStrings)
{
    return !m_shouldChangeTextDelegate || m_shouldChangeTextDelegate(this, ranges, replacementStrings);
}

void QVTextView::didChangeText()
{
    Q_EMIT textDidChange();
    QVNotificationCenter::defaultCenter()->postNotificationName(QVTextDidChangeNotification, this);
}

QVTextView::ShouldChangeTextDelegate QVTextView::shouldChangeTextDelegate() const
{
    return m_shouldChangeTextDelegate;
}

void QVTextView::setShouldChangeTextDelegate(ShouldChangeTextDelegate delegate)
{
    m_shouldChangeTextDelegate = std::move(delegate);
}

QWidget *QVTextView::widget() const
{
    return nullptr;
}

void QVTextView::registerWidget(QWidget *widget)
{
    if (m_registeredWidget && m_registeredWidget->property(TextViewProperty).value<QObject *>() == this)
        m_registeredWidget->setProperty(TextViewProperty, QVariant());
    m_registeredWidget = widget;
    if (widget)
        widget->setProperty(TextViewProperty, QVariant::fromValue<QObject *>(this));
}

QVTextView *QVTextView::textViewForWidget(const QWidget *widget)
{
    // Focus often rests on a child of the text widget (its viewport), so the
    // ancestors are asked too.
    for (const QWidget *current = widget; current; current = current->parentWidget()) {
        const QVariant value = current->property(TextViewProperty);
        if (value.isValid())
            if (auto *view = qobject_cast<QVTextView *>(value.value<QObject *>()))
                return view;
    }
    return nullptr;
}

QVTextView *QVTextView::focusedTextView()
{
    return textViewForWidget(QApplication::focusWidget());
}
