#pragma once

#include "settings/PanelLabel.h"

#include <QFrame>

class QVBoxLayout;

namespace kelp {

inline constexpr int textInset = 4;     ///< of texts that stand outside of groups, from the groups' edge
inline constexpr int rowInset = 12;     ///< of a row's content from the edge of its group
inline constexpr int rowHoverInset = 3; ///< of a row's hover background
inline constexpr int rowRadius = 6;

/// The heading of a block.
class SectionTitle final : public PanelLabel
{
    Q_OBJECT

public:
    explicit SectionTitle(const QString &text, QWidget *parent = nullptr);
};

/// A hairline between blocks.
class Divider final : public QWidget
{
    Q_OBJECT

public:
    explicit Divider(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// Rows that belong together: a box with soft corners, and hairlines between the rows that are shown.
class RowGroup : public QWidget
{
    Q_OBJECT

public:
    explicit RowGroup(QWidget *parent = nullptr);

    void addRow(QWidget *row);
    void insertRow(int index, QWidget *row);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QVBoxLayout *m_rows;
};

} // namespace kelp
