#pragma once

#include "Tolvane/menu/MenuRow.h"

namespace tolvane {

// Badge, name, the scroll direction in force, and a pill that says whether a mouse is there.
class HeaderView final : public MenuRow {
public:
    HeaderView(bool reversed, bool mouseConnected, QWidget* parent = nullptr);

    // One disabled item: the subtitle, " · ", the chip's text.
    QAction* plainItem(QObject* parent) const override;

protected:
    int contentHeight() const override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool reversed;
    bool mouseConnected;
};

} // namespace tolvane
