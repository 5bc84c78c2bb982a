#pragma once

#include <QImage>

class QScreen;

namespace tolvane {

// The picture of a whole screen as it is now, blurred, for the overlay to stand on. It is
// kept small (the blur hides the detail) and scaled up when painted. Null where the display
// server does not hand out screen pictures (Wayland, for one); the overlay then darkens what
// the compositor shows through it.
QImage blurredScreenPicture(QScreen* screen);

// The same treatment for a picture already at hand.
QImage blurredBackdrop(const QImage& picture);

} // namespace tolvane
