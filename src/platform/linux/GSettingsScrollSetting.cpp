// GNOME keeps the mouse's natural scrolling in org.gnome.desktop.peripherals.mouse. GIO aborts
// the process when asked for a schema that is not installed, so the schema and its key are
// looked up first; on a desktop without them the setting is absent.
#include "platform/linux/GSettingsScrollSetting.h"

#include <gio/gio.h>

namespace tolvane::oslinux {

namespace {
constexpr const char* schemaId = "org.gnome.desktop.peripherals.mouse";
constexpr const char* keyName = "natural-scroll";
} // namespace

std::optional<bool> GSettingsScrollSetting::naturalScroll() {
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    if (!source) {
        return std::nullopt;
    }
    GSettingsSchema* schema = g_settings_schema_source_lookup(source, schemaId, TRUE);
    if (!schema) {
        return std::nullopt;
    }
    const bool hasKey = g_settings_schema_has_key(schema, keyName);
    g_settings_schema_unref(schema);
    if (!hasKey) {
        return std::nullopt;
    }
    GSettings* settings = g_settings_new(schemaId);
    const bool natural = g_settings_get_boolean(settings, keyName);
    g_object_unref(settings);
    return natural;
}

} // namespace tolvane::oslinux
