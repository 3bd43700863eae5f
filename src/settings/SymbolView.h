#pragma once

#include "settings/PanelLabel.h"

#include <QWidget>

namespace kelp {

/// A symbol beside a text, in one of the panel's inks. It says nothing that the text does not.
class SymbolView final : public QWidget
{
    Q_OBJECT

public:
    SymbolView(const QString &symbol, int size, Ink ink, QWidget *parent = nullptr);

    void present(const QString &symbol, Ink ink);
    /// Clockwise, in degrees.
    void turn(double degrees);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_symbol;
    Ink m_ink;
    double m_degrees = 0;
};

} // namespace kelp
