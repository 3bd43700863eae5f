#pragma once

#include <QComboBox>

namespace kelp {

/// A choice among values, which may stand in sections with a heading. A value that is none of them shows no choice.
class ChoicePicker final : public QComboBox
{
    Q_OBJECT

public:
    /// `name` is what a screen reader calls it.
    explicit ChoicePicker(const QString &name, QWidget *parent = nullptr);

    void addChoice(const QString &text, const QVariant &value);
    void addSection(const QString &title);
    /// Another text for a choice that is there.
    void rename(const QVariant &value, const QString &text);
    /// Whether choosing that value asks the user something. Then it is chosen from the opened list only: the keys that
    /// go from one choice to the next while the list is closed step over it.
    void setAsks(const QVariant &value, bool asks);

    /// Marks that value without a signal.
    void show(const QVariant &value);

    void hidePopup() override;

Q_SIGNALS:
    /// By the user.
    void chosen(const QVariant &value);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void setAskingEnabled(bool enabled);
};

} // namespace kelp
