#pragma once

#include <QSettings>

namespace tolvane {

// QSettings' format for Tolvane.conf: INI groups of "key=value" lines whose values are read
// as plain text. Qt's own INI format decodes "@Variant(...)" values into any Qt type, and a
// damaged one can ask for gigabytes before the program has started.
QSettings::Format plainSettingsFormat();

} // namespace tolvane
