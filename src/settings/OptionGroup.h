#pragma once

#include <QWidget>

class QVBoxLayout;

namespace kelp {

class PanelLabel;

/// A small label above the controls that belong together.
class OptionGroup final : public QWidget
{
    Q_OBJECT

public:
    explicit OptionGroup(const QString &title, QWidget *parent = nullptr);

    void add(QWidget *control);
    /// Lets screen readers say the label of the group for this control, too.
    void nameAfterGroup(QWidget *control);
    /// In one row, from the leading side; the first takes the room that is left when it can.
    void addRow(const QList<QWidget *> &controls, int spacing);
    /// A remark in small print, in as many lines as it takes.
    PanelLabel *addNote(const QString &text);

private:
    void addText(QWidget *text);

    QVBoxLayout *m_column;
    PanelLabel *m_title;
};

} // namespace kelp
