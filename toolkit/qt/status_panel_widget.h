#pragma once

#include <QIcon>
#include <QWidget>

#include <functional>

namespace toolkit::qt {

/// A picture and one line of text, cut at the right where the room ends. Its size does not depend on the
/// text, which may have thousands of characters and change thousands of times a second: the text is fetched
/// when it is painted.
class StatusPanelWidget : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText)
    Q_PROPERTY(bool hasPicture READ hasPicture)

public:
    explicit StatusPanelWidget(QWidget* parent = nullptr);

    QString text() const { return source_ ? source_() : text_; }
    void setText(const QString& text) { text_ = text; }
    /// Where the text comes from from now on; null for setText().
    void setTextSource(std::function<QString()> source);
    /// The source has another text.
    void textChanged();

    bool hasPicture() const { return !picture_.isNull(); }
    void setPicture(const QIcon& picture);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int pictureSize() const;

    std::function<QString()> source_;
    QString text_;
    QIcon picture_;
};

} // namespace toolkit::qt
