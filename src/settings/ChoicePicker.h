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

    /// Marks that value without a signal.
    void show(const QVariant &value);

    void hidePopup() override;

Q_SIGNALS:
    /// By the user.
    void chosen(const QVariant &value);

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace kelp
