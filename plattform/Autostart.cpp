#include "plattform/Autostart.hpp"

#include <string_view>

namespace mobilsteg {

namespace {

std::string fuerXml(const std::string& text) {
    std::string sicher;
    for (const char c : text)
        sicher += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    return sicher;
}

/// In quotes for a desktop entry's command. A backslash is doubled twice: once for the quotes, and all of
/// them for the value.
std::string fuerExec(const std::string& text) {
    std::string sicher;
    for (const char c : text)
        sicher += c == '\\'                                               ? R"(\\\\)"
                  : std::string_view("\"`$").find(c) != std::string::npos ? std::string(R"(\\)") + c
                  : c == '%'                                              ? "%%"
                                                                          : std::string(1, c);
    return "\"" + sicher + "\"";
}

} // namespace

Autostart launchAgent(const Orte& orte, const std::string& kennung, const std::string& programm) {
    return {orte.imHeim("/Library/LaunchAgents/" + kennung + ".plist"),
            R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>Label</key>
	<string>)" +
                fuerXml(kennung) +
                R"(</string>
	<key>ProgramArguments</key>
	<array>
		<string>)" +
                fuerXml(programm) + R"(</string>
	</array>
	<key>RunAtLoad</key>
	<true/>
	<key>LimitLoadToSessionType</key>
	<string>Aqua</string>
	<key>ProcessType</key>
	<string>Interactive</string>
	<key>AssociatedBundleIdentifiers</key>
	<string>)" +
                fuerXml(kennung) +
                R"(</string>
</dict>
</plist>
)"};
}

Autostart desktopEintrag(const Orte& orte, const std::string& kennung, const std::string& name,
                         const std::string& programm) {
    return {orte.imHeim("/.config/autostart/" + kennung + ".desktop"),
            "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + fuerExec(programm) +
                "\nTerminal=false\n"};
}

Autostart autostart(const Orte& orte, const std::string& kennung, const std::string& name,
                    const std::string& programm) {
#ifdef __APPLE__
    (void)name;
    return launchAgent(orte, kennung, programm);
#else
    return desktopEintrag(orte, kennung, name, programm);
#endif
}

} // namespace mobilsteg
