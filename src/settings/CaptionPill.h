#pragma once

#include <QWidget>

class QLabel;

namespace kelp {

/// A short note over a picture: a symbol and a text, light on dark.
class CaptionPill final : public QWidget
{
    Q_OBJECT

public:
    explicit CaptionPill(QWidget *parent);

    void show(const QString &symbol, const QString &text);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_symbol;
    QLabel *m_text; ///< for screen readers
};

} // namespace kelp
