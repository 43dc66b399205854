// SPDX-License-Identifier: Apache-2.0
#include "options.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "command_line.h"
#include "configuration.h"
#include "measured_trace.h"
#include "time_text.h"

namespace pwrmgt::pwrmgtd {
namespace {

std::string as_argument(const Setting& setting) {
    return "--" + setting.name + "=" + setting.value;
}

// What is wrong with a setting taken by itself, with the place it comes from; or nothing.
std::string problem_of(const Setting& setting, const std::vector<std::string>& names) {
    const std::string origin = setting.origin + ": ";
    if (std::find(names.begin(), names.end(), setting.name) == names.end()) {
        return origin + "there is no setting '" + setting.name + "'";
    }
    if (setting.value.empty()) return origin + setting.name + " has no value";
    Options ignored;
    CLI::App app;
    add_options(app, ignored, CLI::MultiOptionPolicy::Throw);
    try {
        app.parse(std::vector<std::string>{as_argument(setting)});
    } catch (const CLI::ParseError& error) {
        const std::string words = error.what();
        return origin + (words.starts_with("--") ? words.substr(2) : words);
    }
    return {};
}

// The file that is read: the one asked for, or the usual one where it exists; "" for none.
std::string config_file(const CLI::App& app, const Options& options) {
    if (app.count("--config") > 0) return options.config_file;
    const char* const variable = std::getenv("PWRMGTD_CONFIG");
    if (variable != nullptr && *variable != '\0') return variable;
    return std::ifstream(kUsualConfigFile) ? kUsualConfigFile : "";
}

// File and environment, in the order in which later ones win.
Settings settings_beside(const std::string& file) {
    const std::vector<std::string> names = configurable_names();
    Settings all = file.empty() ? Settings{} : settings_of_file(file);
    if (!all.error.empty()) return all;
    const Settings environment = settings_of_environment(names);
    all.settings.insert(all.settings.end(), environment.settings.begin(),
                        environment.settings.end());
    for (const Setting& setting : all.settings) {
        all.error = problem_of(setting, names);
        if (!all.error.empty()) return all;
    }
    return all;
}

// A configuration file that says what is in force; `given` is the command line alone.
std::string effective_text(const CLI::App& app, const CLI::App& given, const Settings& beside,
                           const std::string& file) {
    std::string text = "# pwrmgtd: configuration in force" +
                       (file.empty() ? ", no file" : "; file " + file) + "\n";
    for (const CLI::Option* option : configurable_options(app)) {
        const std::string name = option->get_lnames().front();
        std::string origin = "built in";
        for (const Setting& setting : beside.settings) {
            if (setting.name == name) origin = setting.origin;
        }
        if (given.count("--" + name) > 0) origin = "command line";
        const std::string value =
            option->count() > 0 ? option->results().back() : option->get_default_str();
        const bool bare = value.find_first_not_of("0123456789") == std::string::npos ||
                          value == "true" || value == "false";
        text += value.empty()
                    ? "# " + name + " is not set\n"
                    : name + " = " + (bare ? value : '"' + value + '"') + "  # " + origin + "\n";
    }
    return text;
}

// What CLI11 cannot say; the reason, or nothing.
std::string check(const CLI::App& given, Options& options) {
    if (options.source == SourceKind::trace && options.trace_file.empty()) {
        return "--source trace needs --trace FILE";
    }
    if (options.source != SourceKind::trace && given.count("--trace") > 0) {
        return "--trace needs --source trace";
    }
    if (given.count("--replay") > 0 && options.replay_file.empty()) return "--replay needs a file";
    if (options.until == "now") return {};
    options.until_s = parse_time(options.until);
    if (!options.until_s) return "--until: '" + options.until + "' is not " + kUntilText;
    if (!is_recordable(*options.until_s)) {
        return "--until: the database cannot hold the day before " + options.until;
    }
    return {};
}

Parsed refused(const std::string& reason) {
    return {std::nullopt, Exit::usage, reason + "; --help tells more"};
}

// The command line by itself; nothing when it is in order and asks for no text.
std::optional<Parsed> parse_given(CLI::App& app, int argc, const char* const* argv) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return Parsed{std::nullopt, Exit::ok, app.help()};
    } catch (const CLI::CallForVersion& version) {
        return Parsed{std::nullopt, Exit::ok, std::string(version.what()) + "\n"};
    } catch (const CLI::ParseError& error) {
        return refused(error.what());
    }
    return std::nullopt;
}

}  // namespace

Parsed parse_options(int argc, const char* const* argv) {
    Options of_command_line;
    CLI::App given(kDescription, "pwrmgtd");
    add_options(given, of_command_line, CLI::MultiOptionPolicy::Throw);
    if (const auto ended = parse_given(given, argc, argv)) return *ended;

    const std::string file = config_file(given, of_command_line);
    const Settings beside = settings_beside(file);
    if (!beside.error.empty()) return {std::nullopt, Exit::usage, beside.error};

    // Every setting is in order by itself; later ones win.
    std::vector<std::string> arguments;
    for (const Setting& setting : beside.settings) {
        arguments.push_back(as_argument(setting));
    }
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    std::reverse(arguments.begin(), arguments.end());  // as CLI11 takes them
    Options options;
    CLI::App app(kDescription, "pwrmgtd");
    add_options(app, options, CLI::MultiOptionPolicy::TakeLast);
    app.parse(std::move(arguments));
    const std::string reason = check(given, options);
    if (!reason.empty()) return refused(reason);
    if (!options.check_config) return {options, Exit::ok, {}};
    if (options.source == SourceKind::trace) {
        const trace::LoadResult loaded = trace::load(options.trace_file);
        if (!loaded.trace) return {std::nullopt, Exit::failure, loaded.error};
    }
    return {std::nullopt, Exit::ok, effective_text(app, given, beside, file)};
}

}  // namespace pwrmgt::pwrmgtd
