#include "ansicht/qt/QtBetrieb.hpp"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>
#include <QStringList>

#include <algorithm>

namespace mobilsteg {

namespace {

using Verbinde = void* (*)(const char*, int*);
using Oeffne = void* (*)(const char*);
using Fehlschlag = int (*)(void*);
using Trenne = void (*)(void*);

/// Whether Qt's plugin is there, and everything that it is linked against.
bool einsteckbar(const QString& plugin) {
    for (const QString& pfad : QCoreApplication::libraryPaths()) {
        const QString datei = pfad + "/platforms/" + plugin;
        if (QFileInfo::exists(datei))
            return QLibrary(datei).load();
    }
    return false;
}

bool x11() {
    if (!qEnvironmentVariableIsSet("DISPLAY") || !einsteckbar("libqxcb.so"))
        return false;
    QLibrary xcb("xcb", 1);
    const auto verbinde = reinterpret_cast<Verbinde>(xcb.resolve("xcb_connect"));
    const auto fehlschlag = reinterpret_cast<Fehlschlag>(xcb.resolve("xcb_connection_has_error"));
    const auto trenne = reinterpret_cast<Trenne>(xcb.resolve("xcb_disconnect"));
    if (verbinde == nullptr || fehlschlag == nullptr || trenne == nullptr)
        return false;
    void* verbindung = verbinde(nullptr, nullptr); // never null, a failed one has to be freed, too
    const bool gelungen = fehlschlag(verbindung) == 0;
    trenne(verbindung);
    return gelungen;
}

bool wayland() {
    if (!qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || !einsteckbar("libqwayland-generic.so"))
        return false;
    QLibrary bibliothek("wayland-client", 0);
    const auto oeffne = reinterpret_cast<Oeffne>(bibliothek.resolve("wl_display_connect"));
    const auto trenne = reinterpret_cast<Trenne>(bibliothek.resolve("wl_display_disconnect"));
    if (oeffne == nullptr || trenne == nullptr)
        return false;
    void* verbindung = oeffne(nullptr);
    if (verbindung == nullptr)
        return false;
    trenne(verbindung);
    return true;
}

/// `name` as in QT_QPA_PLATFORM, with or without options behind a colon.
bool vorhanden(const QString& name) {
    const QString art = name.section(':', 0, 0).trimmed();
    if (art == "xcb")
        return x11();
    if (art.startsWith("wayland"))
        return wayland();
    return art == "offscreen" || art == "minimal" || art == "vnc";
}

} // namespace

bool QtBetrieb::anzeigeVorhanden() {
#if defined(Q_OS_MACOS)
    return true;
#else
    // Several names are tried in turn, by Qt as well.
    const QString gewuenscht = qEnvironmentVariable("QT_QPA_PLATFORM");
    const QStringList namen = gewuenscht.isEmpty() ? QStringList{"wayland", "xcb"} : gewuenscht.split(';');
    return std::any_of(namen.begin(), namen.end(), vorhanden);
#endif
}

} // namespace mobilsteg
