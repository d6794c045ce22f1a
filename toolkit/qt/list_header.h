#pragma once

#include <QHeaderView>

namespace toolkit::qt {

/// The header of a list with narrow columns: a word that is too long for its column is shown in two lines,
/// divided where the dynamic property "hyphenated" of the list has a hyphen in it ("Haus-boot"). The text
/// stays whole.
class ListHeader : public QHeaderView {
public:
    explicit ListHeader(QWidget* list);

protected:
    void initStyleOptionForIndex(QStyleOptionHeader* option, int column) const override;
    QSize sectionSizeFromContents(int column) const override;

private:
    /// The text as it is shown; a line feed divides its lines.
    QString shown(int column) const;
};

} // namespace toolkit::qt
