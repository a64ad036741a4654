#pragma once

#include <QVKit/Platform/QVStringConstant.h>
#include <QVKit/Platform/QVAttributedString.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QStringList>

#include <functional>
#include <optional>

class QAction;
class QMenu;
class QMenuBar;
class QWidget;
class QVUndoManager;
class QVTextView;

/** Posted on the default notification centre by QVTextView::didChangeText(), with the view as object. */
inline constexpr QVStringConstant QVTextDidChangeNotification = u"QVTextDidChangeNotification";

/**
 * The mutable attributed text a text view shows. Edits between beginEditing()
 * and endEditing() (which nest) form one batch: a widget lays out once and its
 * undo history sees one step. Ranges count UTF-16 code units of string().
 */
class QVKIT_EXPORT QVTextStorage
{
public:
    virtual ~QVTextStorage();

    virtual QString string() const = 0;
    virtual quint64 length() const = 0;
    virtual QVAttributedString attributedSubstringFromRange(QVRange range) const = 0;
    /** The whole text with its attributes. */
    QVAttributedString attributedString() const;

    virtual void beginEditing() = 0;
    virtual void endEditing() = 0;

    virtual void replaceCharactersInRange(QVRange range, const QVAttributedString &string) = 0;
    virtual void replaceCharactersInRange(QVRange range, const QString &string) = 0;
    virtual void setAttributes(const QVTextAttributes &attributes, QVRange range) = 0;
    virtual void addAttributes(const QVTextAttributes &attributes, QVRange range) = 0;
    virtual void addAttribute(const QString &name, const QVariant &value, QVRange range) = 0;
    virtual void removeAttribute(const QString &name, QVRange range) = 0;
};

/**
 * An editable text view as text operations see it: editability, the selected
 * ranges, the text storage, permission to edit, the change report and an undo
 * manager. QVTextEditView puts it over a QTextEdit or QPlainTextEdit;
 * QVHeadlessTextView keeps the text in a QVAttributedString, for hosts without
 * widgets and for the command-line tool.
 *
 * Every edit of a text operation goes through QVTextViewModifier, which asks
 * shouldChangeTextInRanges() once, edits the storage in one batch, names the
 * undo step, selects the results and calls didChangeText().
 */
class QVKIT_EXPORT QVTextView : public QObject
{
    Q_OBJECT

public:
    /**
     * Asked before an edit, with the ranges (in the text before the edit) and
     * the plain replacement strings, or nothing for attribute-only edits.
     */
    using ShouldChangeTextDelegate = std::function<bool(QVTextView *view, const QVRangeList &ranges,
                                                        const std::optional<QStringList> &replacementStrings)>;

    explicit QVTextView(QObject *parent = nullptr);
    ~QVTextView() override;

    virtual bool isEditable() const = 0;
    virtual void setEditable(bool editable) = 0;
    virtual bool isSelectable() const = 0;
    virtual void setSelectable(bool selectable) = 0;

    /** Never empty: an insertion point is a range of length 0. Ascending, non-overlapping. */
    virtual QVRangeList selectedRanges() const = 0;
    virtual void setSelectedRanges(const QVRangeList &ranges) = 0;

    virtual QVTextStorage *textStorage() = 0;
    virtual QVUndoManager *undoManager() = 0;

    /**
     * Asks the delegate whether the edit may go ahead; when it may, prepares
     * the undo step that the coming edit becomes.
     */
    virtual bool shouldChangeTextInRanges(const QVRangeList &ranges,
                                          const std::optional<QStringList> &replacementStrings);
    /** Emits textDidChange() and posts QVTextDidChangeNotification. */
    virtual void didChangeText();

    /** The delegate's permission check; none means every edit may go ahead. */
    ShouldChangeTextDelegate shouldChangeTextDelegate() const;
    void setShouldChangeTextDelegate(ShouldChangeTextDelegate delegate);

    /** The widget shown, or nullptr for a view without one. */
    virtual QWidget *widget() const;
    /** The view made over the widget (or over an ancestor of it), or nullptr. */
    static QVTextView *textViewForWidget(const QWidget *widget);
    /** The view over the widget that has keyboard focus, or nullptr. */
    static QVTextView *focusedTextView();

    // Text core: user commands over every selected range, one undo step each.

    void uppercase(QObject *sender = nullptr);
    void lowercase(QObject *sender = nullptr);
    void capitalize(QObject *sender = nullptr);
    void straightenQuotes(QObject *sender = nullptr);
    void smartenQuotes(QObject *sender = nullptr);
    void insertLocalizedQuotes(QObject *sender = nullptr);
    void insertLocalizedAlternativeQuotes(QObject *sender = nullptr);
    /** Wraps the selections in the pair that the sender's delimiter (an action's text or data) belongs to. */
    void insertDelimiter(QObject *sender = nullptr);
    void insertOpenDelimiter(const QString &openDelimiter, const QString &closeDelimiter);

    // Text core interface: the menus that offer those commands. Ownership
    // follows Qt's parents throughout: every menu and action made here belongs
    // to the parent given, or to the caller when there is none.

    /**
     * "Make Upper Case" (Ctrl+Shift+U), "Make Lower Case" and "Capitalize",
     * named "uppercase:", "lowercase:" and "capitalize:". The actions work on
     * the target, or on the focused text view when there is none. The menu
     * owns its actions; the parent owns the menu, or without a parent the
     * caller does (delete it, or give it a parent).
     */
    static QMenu *transformationsMenu(QVTextView *target = nullptr, QWidget *parent = nullptr);
    /**
     * An action titled "Transformations" carrying transformationsMenu() as its
     * menu. The action is that menu's own menuAction() and lives as long as
     * the menu, which belongs to the parent (without one, the caller deletes
     * action->menu()).
     */
    static QAction *transformationsMenuItem(QVTextView *target = nullptr, QWidget *parent = nullptr);
    /**
     * Puts the transformation actions in the places of the menu's actions
     * named "uppercaseWord:", "lowercaseWord:" and "capitalizeWord:"
     * (QObject::objectName); without any of those nothing changes. The new
     * actions belong to the menu; the replaced ones are only taken out of it
     * and stay with whoever owned them (usually the menu, as their parent).
     */
    static void replaceTransformationsMenuInMenu(QMenu *menu, QVTextView *target = nullptr);
    /** Adds a "Select" menu of selection commands, owned by the menu bar, before its last menu. */
    static void insertSelectMenuInMainMenu(QMenuBar *menuBar);
    /**
     * The view's context menu: the widget's standard actions, then the text
     * core's. The parent owns it, or the caller without one (as with
     * QTextEdit::createStandardContextMenu()).
     */
    QMenu *coreContextualMenu(QWidget *parent = nullptr);

Q_SIGNALS:
    void textDidChange();

protected:
    /**
     * Makes textViewForWidget() answer this view for the widget (and the
     * widgets inside it) for as long as both live; a later view over the same
     * widget takes its place.
     */
    void registerWidget(QWidget *widget);

private:
    ShouldChangeTextDelegate m_shouldChangeTextDelegate;
    QPointer<QWidget> m_registeredWidget;
};
