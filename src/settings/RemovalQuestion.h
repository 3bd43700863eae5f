#pragma once

#include <QWidget>

namespace kelp {

class PanelLabel;
class TextButton;

/// Asks whether an account is really to be removed.
class RemovalQuestion final : public QWidget
{
    Q_OBJECT

public:
    explicit RemovalQuestion(const QString &email, QWidget *parent = nullptr);

    /// Gives the keyboard to the harmless answer, and tells assistive technology.
    void ask();

Q_SIGNALS:
    void answered(bool remove);

private:
    PanelLabel *m_title;
    TextButton *m_cancel;
};

} // namespace kelp
