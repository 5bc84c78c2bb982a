#include "platform/linux/GSettingsScrollSetting.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace tolvane::testing {
namespace {

// GIO looks for schemas where GSETTINGS_SCHEMA_DIR and XDG_DATA_DIRS say and, with the memory
// backend, answers every key with its schema's default: a desktop of the test's own making.
class DesktopSchemas : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(schemas.isValid());
        for (const char* name : names) {
            const char* value = std::getenv(name);
            saved.push_back(value ? std::optional<std::string>(value) : std::nullopt);
        }
        ::setenv("GSETTINGS_SCHEMA_DIR", schemas.path().toLocal8Bit().constData(), 1);
        ::setenv("XDG_DATA_DIRS", schemas.filePath(QStringLiteral("none")).toLocal8Bit(), 1);
        ::setenv("GSETTINGS_BACKEND", "memory", 1);
    }

    void TearDown() override {
        for (std::size_t i = 0; i < saved.size(); ++i) {
            if (saved[i]) {
                ::setenv(names[i], saved[i]->c_str(), 1);
            } else {
                ::unsetenv(names[i]);
            }
        }
    }

    // Installs the mouse schema with `keys` (GSettings schema XML <key> elements).
    void installMouseSchema(const QString& keys) {
        QFile xml(schemas.filePath(QStringLiteral("org.gnome.desktop.peripherals.gschema.xml")));
        ASSERT_TRUE(xml.open(QIODevice::WriteOnly));
        xml.write(QStringLiteral("<schemalist><schema id=\"org.gnome.desktop.peripherals.mouse\" "
                                 "path=\"/org/gnome/desktop/peripherals/mouse/\">%1</schema>"
                                 "</schemalist>")
                      .arg(keys)
                      .toUtf8());
        xml.close();
        QString compiler = QStandardPaths::findExecutable(QStringLiteral("glib-compile-schemas"));
        if (compiler.isEmpty()) {
            compiler = QStringLiteral("/usr/lib/x86_64-linux-gnu/glib-2.0/glib-compile-schemas");
        }
        ASSERT_EQ(QProcess::execute(compiler, {schemas.path()}), 0);
    }

    static constexpr const char* names[] = {"GSETTINGS_SCHEMA_DIR", "XDG_DATA_DIRS",
                                            "GSETTINGS_BACKEND"};
    QTemporaryDir schemas;
    std::vector<std::optional<std::string>> saved;
};

QString naturalScrollKey(const char* value) {
    return QStringLiteral("<key name=\"natural-scroll\" type=\"b\"><default>%1</default></key>")
        .arg(QLatin1String(value));
}

TEST_F(DesktopSchemas, ReadsTheDesktopsNaturalScrollOrNothingWithoutTheSchemaOrItsKey) {
    EXPECT_EQ(oslinux::GSettingsScrollSetting().naturalScroll(), std::nullopt) << "no schema";
    installMouseSchema(QStringLiteral("<key name=\"speed\" type=\"d\"><default>0</default></key>"));
    EXPECT_EQ(oslinux::GSettingsScrollSetting().naturalScroll(), std::nullopt) << "no key";
    for (bool natural : {true, false}) {
        installMouseSchema(naturalScrollKey(natural ? "true" : "false"));
        oslinux::GSettingsScrollSetting setting;
        EXPECT_EQ(setting.naturalScroll(), natural);
        EXPECT_EQ(setting.naturalScroll(), natural) << "a second question, the same answer";
    }
    { oslinux::GSettingsScrollSetting unused; }
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a reader was not reaped";
}

} // namespace
} // namespace tolvane::testing
