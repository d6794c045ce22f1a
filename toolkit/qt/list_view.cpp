#include "toolkit/list_view.h"

#include "toolkit/held_events.h"
#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"
#include "toolkit/qt/list_header.h"
#include "toolkit/qt/texts.h"
#include "toolkit/shown_text.h"

#include <QEvent>
#include <QHeaderView>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QStyle>
#include <QTreeWidget>

namespace toolkit::qt {

namespace {

constexpr double twipsPerInch = 1440;

/// Size of the letters that the columns are made for. They grow with larger ones.
constexpr double usualPointSize = 9;

QStringList rowTexts(const ListView::Item& item) {
    QStringList texts;
    for (const std::string& text : item)
        texts += lines(shownText(text));
    return texts;
}

/// Shows the list as rows in columns. The marked row is the control's; what the user marks is reported first.
class ListViewAdaptor : public WidgetAdaptor {
public:
    ListViewAdaptor(ListView& list, QTreeWidget& widget)
        : WidgetAdaptor(list, widget), list_(list), widget_(widget) {
        widget.setHeader(new ListHeader(&widget)); // which the list owns
        widget.installEventFilter(this);
        connect(&widget, &QTreeWidget::itemSelectionChanged, this, [this] { selectionChanged(); });
        connect(&widget, &QTreeWidget::itemPressed, this, [this](QTreeWidgetItem* item) { pressed(*item); });
        connect(&widget, &QTreeWidget::itemDoubleClicked, this, [this] { doubleClicked(); });
        connect(widget.header(), &QHeaderView::sectionResized, this,
                [this](int column, int, int width) { columnResized(column, width); });
        viewport_ = widget.viewport();
        viewport_->installEventFilter(this);
        headerViewport_ = widget.header()->viewport();
        headerViewport_->installEventFilter(this);
        shows(Property::Drawing, [this] { showHeaderStyle(); });
        shows(Property::Items, [this] { showItems(); });
        showsChanges({Property::ListIndex}, [this] { showSelected(); });
    }

    void release() override {
        released_ = true;
        WidgetAdaptor::release();
    }

    /// Events come until the very end of the widget's destruction, so it is not asked which part is which.
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (released_) return WidgetAdaptor::eventFilter(watched, event);
        if (watched == &widget_ && event->type() == QEvent::FontChange) showColumns();
        if (watched == headerViewport_ && isMouse(*event)) askForColumns();
        if (watched == viewport_ && isPress(*event)) {
            reported_ = false;
            leftButton_ = static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
        }
        return WidgetAdaptor::eventFilter(watched, event);
    }

private:
    static bool isPress(const QEvent& event) {
        return event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick;
    }

    static bool isMouse(const QEvent& event) {
        return isPress(event) || event.type() == QEvent::MouseMove || event.type() == QEvent::HoverMove;
    }

    void report(int row) {
        reported_ = true;
        send([this, row] { list_.click(static_cast<std::size_t>(row)); });
        if (!released_) showSelected();
    }

    void selectionChanged() {
        if (released_) return;
        const int row = selectedRow();
        if (row < 0)
            showSelected();
        else
            report(row);
    }

    /// A press on the marked row changes nothing here, and is a choice nevertheless.
    void pressed(QTreeWidgetItem& item) {
        if (!reported_) report(widget_.indexOfTopLevelItem(&item));
    }

    void doubleClicked() {
        if (leftButton_) send([this] { list_.doubleClick(); });
    }

    int selectedRow() const {
        const QList<QTreeWidgetItem*> selected = widget_.selectedItems();
        return selected.isEmpty() ? -1 : widget_.indexOfTopLevelItem(selected.first());
    }

    void showSelected() {
        if (selectedRow() == list_.selected()) return;
        const QSignalBlocker silence(widget_);
        QTreeWidgetItem* item = widget_.topLevelItem(list_.selected());
        widget_.setCurrentItem(item, 0, QItemSelectionModel::NoUpdate);
        widget_.clearSelection();
        if (item != nullptr) item->setSelected(true);
    }

    void showItems() {
        {
            const QSignalBlocker silence(widget_);
            widget_.clear();
            widget_.setColumnCount(static_cast<int>(list_.columns().size()));
            for (std::size_t row = 0; row < list_.items().size(); ++row)
                widget_.addTopLevelItem(rowOf(row));
        }
        showColumns();
        showSelected();
    }

    QTreeWidgetItem* rowOf(std::size_t row) const {
        auto* item = new QTreeWidgetItem(rowTexts(list_.items()[row]));
        const std::string& tip = list_.itemToolTip(row);
        for (int column = 0; column < item->columnCount(); ++column) {
            item->setToolTip(column, plainToolTip(tip));
            item->setData(column, Qt::AccessibleDescriptionRole, fromUtf8(tip));
        }
        return item;
    }

    void showColumns() {
        resizing_ = true;
        QTreeWidgetItem* header = widget_.headerItem();
        for (int column = 0; column < widget_.columnCount(); ++column) {
            const ListView::Column& given = list_.columns()[static_cast<std::size_t>(column)];
            header->setText(column, lines(given.header));
            header->setToolTip(column, plainToolTip(given.header));
            if (given.width < 0)
                widget_.resizeColumnToContents(column);
            else
                widget_.header()->resizeSection(column, pixels(given.width));
        }
        resizing_ = false;
        showWholeColumns();
    }

    void showWholeColumns() {
        const int frame = 2 * widget_.frameWidth();
        const int scrollBar = widget_.style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, &widget_);
        const int wanted = widget_.header()->length() + frame + scrollBar;
        if (widget_.minimumWidth() < wanted) widget_.setMinimumWidth(wanted);
    }

    void showHeaderStyle() {
        widget_.header()->setSectionsClickable((list_.headerStyle() & ListView::HeaderButtons) != 0);
    }

    /// A column that may not change does not even look as if it could be dragged.
    void askForColumns() {
        if (eventsAreHeld()) return; // nobody would answer
        bool refused = false;
        send([this, &refused] { refused = list_.headerNotify(ListView::HeaderItemChanging); });
        const auto mode = refused ? QHeaderView::Fixed : QHeaderView::Interactive;
        if (widget_.header()->sectionResizeMode(0) != mode) widget_.header()->setSectionResizeMode(mode);
    }

    void columnResized(int column, int width) {
        if (resizing_ || released_ || static_cast<std::size_t>(column) >= list_.columns().size()) return;
        const auto index = static_cast<std::size_t>(column);
        send([this, index, width] {
            if (!list_.headerNotify(ListView::HeaderItemChanging)) list_.setColumnWidth(index, twips(width));
        });
        const std::int32_t kept = list_.columns()[index].width;
        if (kept < 0 || pixels(kept) == width) return;
        resizing_ = true;
        widget_.header()->resizeSection(column, pixels(kept));
        resizing_ = false;
    }

    double pixelsPerTwip() const {
        const double growth = qMax(1.0, widget_.fontInfo().pointSizeF() / usualPointSize);
        return growth * widget_.logicalDpiX() / twipsPerInch;
    }
    int pixels(std::int32_t twips) const { return qRound(twips * pixelsPerTwip()); }
    std::int32_t twips(int pixels) const { return qRound(pixels / pixelsPerTwip()); }

    ListView& list_;
    QTreeWidget& widget_;
    bool reported_ = false;   ///< since the last press of a mouse button
    bool leftButton_ = false; ///< was the one that was pressed last
    bool resizing_ = false;   ///< by the program
    bool released_ = false;
    QWidget* viewport_ = nullptr;
    QWidget* headerViewport_ = nullptr;
};

} // namespace

std::unique_ptr<Adaptor> adaptListView(Control& control, QObject* part) {
    return adaptWidget<ListViewAdaptor, ListView, QTreeWidget>(control, part);
}

} // namespace toolkit::qt
