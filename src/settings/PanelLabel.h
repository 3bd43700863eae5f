#pragma once

#include <QLabel>

namespace kelp {

/// One of the panel's inks, in the colours of the desktop.
enum class Ink { Primary, Secondary, Accent, Warning, Danger };
[[nodiscard]] QColor inkColour(Ink ink, const QPalette &palette);

/// A plain text that never asks for more room than there is: it is broken into at most so many lines, and the last one
/// ends with an ellipsis. A screen reader reads all of it, and the pointer finds all of it in a tip.
class PanelLabel : public QLabel
{
    Q_OBJECT

public:
    explicit PanelLabel(int pixelSize, QFont::Weight weight = QFont::Normal, Ink ink = Ink::Primary,
                        QWidget *parent = nullptr);

    /// 1 at first; 0 = as many as the text takes.
    void setMaximumLines(int lines);
    void setInk(Ink ink);
    /// Whether not all of the text is to be seen.
    [[nodiscard]] bool isCut() const { return broken(contentsRect().width()).cut; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] bool hasHeightForWidth() const override { return m_maximumLines != 1; }
    [[nodiscard]] int heightForWidth(int width) const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    struct Broken
    {
        QStringList lines;
        bool cut = false;
    };
    [[nodiscard]] Broken broken(int width) const;

    Ink m_ink;
    int m_maximumLines = 1;
};

/// Shows a text of somebody else's as a tip, plain and wrapped.
void showPlainTip(const QPoint &globalPosition, const QString &text, QWidget *widget);

} // namespace kelp
