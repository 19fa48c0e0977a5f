#include "VekMasterCompletion.h"

#include <cctype>
#include <map>
#include <sstream>
#include <vector>

#include "VekMasterHelp.h"
#include "VekMessageCatalog.h"
#include "VekSettingsTable.h"

namespace vekmaster {

namespace {

using Value = VekMasterHelp::Value;

// What the completion does with each kind of value.
const char* kindOf(Value value) {
    switch (value) {
        case Value::File: return "file";
        case Value::Document: return "document";
        case Value::Line: return "line";
        case Value::Program: return "program";
        case Value::Channel: return "channel";
        case Value::None:
        case Value::Other: break;
    }
    return "-";
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> words;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

bool isOperand(const std::string& word) {
    return !word.empty() && std::isupper(static_cast<unsigned char>(word[0])) != 0;
}

std::string join(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

// The function that reads the tables above it; bash-completion's helpers split
// --option=value and complete file names.
constexpr const char* kFunction = R"(
_vek_master()
{
    local cur prev words cword split
    _init_completion -s || return

    if [[ $split == true ]]; then
        case ${_vek_master_values[$prev]-} in
            file) _filedir ;;
            line) COMPREPLY=($(compgen -f -- "${cur:-/dev/tty}")) ;;
            program) _filedir ;;
            =*) COMPREPLY=($(compgen -W "${_vek_master_values[$prev]#=}" -- "$cur")) ;;
        esac
        return
    fi
    # The words so far that are not options; those after -- are the daemon's.
    local i operands=()
    for ((i = 1; i < cword; i++)); do
        [[ ${words[i]} == -- ]] && return
        [[ ${words[i]} == -* ]] || operands+=("${words[i]}")
    done
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$_vek_master_options" -- "$cur"))
        [[ ${COMPREPLY-} == *= ]] && compopt -o nospace
        return
    fi
    local n=${#operands[@]} kinds=()
    if ((n == 0)); then
        COMPREPLY=($(compgen -W "$_vek_master_commands $_vek_master_features" -- "$cur"))
        return
    elif [[ -n ${_vek_master_messages[${operands[0]}]+set} ]]; then
        if ((n == 1)); then
            COMPREPLY=($(compgen -W "${_vek_master_messages[${operands[0]}]}" -- "$cur"))
            return
        fi
        kinds=(- - ${_vek_master_slots[${operands[0]} ${operands[1]}]-})
    elif [[ -n ${_vek_master_subcommands[${operands[0]}]+set} ]]; then
        if ((n == 1)); then
            COMPREPLY=($(compgen -W "${_vek_master_subcommands[${operands[0]}]}" -- "$cur"))
            return
        fi
        kinds=(- - ${_vek_master_operands[${operands[0]} ${operands[1]}]-})
    else
        kinds=(- ${_vek_master_operands[${operands[0]}]-})
    fi
    case ${kinds[n]-} in
        file) _filedir ;;
        document)
            _filedir
            COMPREPLY+=($(compgen -W device -- "$cur"))
            ;;
        channel) COMPREPLY=($(compgen -W "$_vek_master_channels" -- "$cur")) ;;
        feature) COMPREPLY=($(compgen -W "$_vek_master_features" -- "$cur")) ;;
    esac
} &&
    complete -F _vek_master vek_master
)";

}  // namespace

std::string VekMasterCompletion::script(const VekMessageCatalog& catalog) {
    std::vector<std::string> commands;
    std::vector<std::string> options;
    std::map<std::string, std::string> values;       // "--output" -> "file"
    std::map<std::string, std::string> operands;     // "diff" -> "document document"
    std::map<std::string, std::string> subcommands;  // "trace" -> "show from-log replay"

    auto addOption = [&](const std::string& word, const std::string& kind) {
        const size_t equals = word.find('=');
        const std::string name = word.substr(0, equals == std::string::npos ? equals : equals + 1);
        for (const std::string& known : options) {
            if (known == name) {
                return;
            }
        }
        options.push_back(name);
        if (equals != std::string::npos) {
            values[name.substr(0, equals)] = kind;
        }
    };
    // The usage lines name the commands and the options not listed below them, with
    // their one possible value (--timing=original).
    for (const char* line : VekMasterHelp::synopsis()) {
        std::vector<std::string> words = split(line);
        size_t at = 1;
        if (at < words.size() && words[at] == "[OPTION...]") {
            ++at;
        }
        if (at < words.size() && !isOperand(words[at]) && words[at][0] != '-') {
            bool known = false;
            for (const std::string& command : commands) {
                known = known || command == words[at];
            }
            if (!known) {
                commands.push_back(words[at]);
            }
            if (at + 1 < words.size() && !isOperand(words[at + 1]) && words[at + 1][0] != '-' &&
                words[at + 1][0] != '[') {
                std::string& list = subcommands[words[at]];
                list += (list.empty() ? "" : " ") + words[at + 1];
            }
        }
        for (std::string word : words) {
            word = word.substr(word.find_first_not_of("[("));
            if (word.compare(0, 2, "--") == 0 && word.size() > 2) {
                const size_t equals = word.find('=');
                const std::string value = word.substr(equals + 1);
                if (equals != std::string::npos && !isOperand(value)) {
                    addOption(word, "=" + value.substr(0, value.find_first_of("])")));
                }
            }
        }
    }
    for (const VekMasterHelp::Section& section : VekMasterHelp::sections()) {
        for (const VekMasterHelp::Entry& entry : section.entries) {
            const std::vector<std::string> words = split(entry.term);
            if (words[0].compare(0, 2, "--") == 0) {
                addOption(words[0], kindOf(entry.value));
                continue;
            }
            // "apply FILE", "trace show FILE": the command's words, then one kind an operand.
            std::string command;
            std::vector<std::string> kinds;
            for (const std::string& word : words) {
                if (isOperand(word)) {
                    kinds.push_back(kindOf(entry.value));
                } else {
                    command += (command.empty() ? "" : " ") + word;
                }
            }
            operands[command] = join(kinds);
        }
    }

    std::map<std::string, std::string> messages;
    std::map<std::string, std::string> slots;
    for (const VekMasterMessage& message : catalog.messages()) {
        std::string& list = messages[message.feature];
        list += (list.empty() ? "" : " ") + message.name;
        std::vector<std::string> kinds;
        for (const VekFieldSignature::Slot& slot : message.signature.slots()) {
            kinds.push_back(slot.name == "channel" || slot.name == "feature" ? slot.name : "-");
        }
        slots[message.feature + ' ' + message.name] = join(kinds);
    }

    std::string out =
        "# bash completion for vek_master -*- shell-script -*-\n"
        "# Made at build time from vek_master's help tables and message catalogue.\n\n";
    auto scalar = [&](const char* name, const std::vector<std::string>& words) {
        out += std::string("_vek_master_") + name + "='" + join(words) + "'\n";
    };
    auto table = [&](const char* name, const std::map<std::string, std::string>& entries) {
        out += std::string("declare -gA _vek_master_") + name + "=(\n";
        for (const auto& entry : entries) {
            out += "    ['" + entry.first + "']='" + entry.second + "'\n";
        }
        out += ")\n";
    };
    scalar("commands", commands);
    scalar("features", catalog.features());
    scalar("channels", VekSettingsTable::channels());
    scalar("options", options);
    table("values", values);
    table("operands", operands);
    table("subcommands", subcommands);
    table("messages", messages);
    table("slots", slots);
    return out + kFunction;
}

}  // namespace vekmaster
