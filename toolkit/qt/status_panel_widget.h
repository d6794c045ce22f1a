#pragma once

#include "toolkit/qt/resource_icon.h"

#include <QIcon>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace toolkit::qt {

/// A picture and one line of text, cut where the room ends. Its size does not depend on the
/// text, which may have thousands of characters and change thousands of times a second: the text is fetched
/// when it is painted.
class StatusPanelWidget : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText)
    Q_PROPERTY(bool hasPicture READ hasPicture)
    Q_PROPERTY(int characters READ characters WRITE setCharacters)

public:
    explicit StatusPanelWidget(QWidget* parent = nullptr);

    QString text() const { return source_ ? source_() : text_; }
    void setText(const QString& text) { text_ = text; }
    /// Where the text comes from from now on; null for setText().
    void setTextSource(std::function<QString()> source);
    /// So many bytes of the text as UTF-8 are shown in any case, and then its end; 0: its beginning is shown.
    void setHead(std::size_t head) { head_ = head; }
    /// The source has another text.
    void textChanged();

    bool hasPicture() const { return !picture_.isNull(); }
    void setPicture(const QIcon& picture);
    /// Of the program's resources.
    void setPictureFolder(const QString& folder) { setPicture(resourceIcon(folder)); }

    /// So many have room.
    int characters() const { return characters_; }
    void setCharacters(int characters) { characters_ = characters; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString visibleText(int width) const;

    static constexpr int usualCharacters = 24;

    int pictureSize() const;

    std::function<QString()> source_;
    QString text_;
    std::size_t head_ = 0;
    QIcon picture_;
    QTimer growth_; ///< until a text that has grown is painted
    QString told_;  ///< what screen readers were told last
    int characters_ = usualCharacters;
};

} // namespace toolkit::qt
