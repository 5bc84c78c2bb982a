#pragma once

#include "Tolvane/menu/MenuRow.h"

#include <QString>

namespace tolvane {

// A small upper-case heading over a group of items.
class SectionCaption final : public MenuRow {
public:
    explicit SectionCaption(QString text, QWidget* parent = nullptr);

    QAction* plainItem(QObject* parent) const override;

protected:
    int contentHeight() const override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString text;
};

} // namespace tolvane
