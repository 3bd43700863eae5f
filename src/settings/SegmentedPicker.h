#pragma once

#include <QList>
#include <QRadioButton>
#include <QWidget>

namespace kelp {

/// One of a few choices, side by side in one track.
class SegmentedPicker final : public QWidget
{
    Q_OBJECT

public:
    struct Choice
    {
        QString text;
        QString value;
    };

    explicit SegmentedPicker(const QList<Choice> &choices, QWidget *parent = nullptr);

    /// Marks the choice of that value without a signal; none where it is unknown.
    void show(const QString &value);

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    void chosen(const QString &value);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QList<Choice> m_choices;
    QList<QRadioButton *> m_segments;
};

} // namespace kelp
