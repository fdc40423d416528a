// SPDX-License-Identifier: MIT
// The scripts for shells. Each passes the words of the line to the program, the last of them the
// one to be completed. No output stands for a file name, a failure for nothing.

#include "Options/Completions.h"

namespace Tool {
namespace {

// The words of `compgen -W` would be expanded, and key paths come out of a file. "=" is a word of
// its own in COMP_WORDS.
constexpr std::string_view forBash = R"bash(# Completion of qrvsettings for bash. In ~/.bashrc:
#   eval "$(qrvsettings completion bash)"
_qrvsettings() {
    local word lines words=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        [[ $word == = ]] || words+=("$word")
    done
    word=${COMP_WORDS[COMP_CWORD]}
    if [[ $word == = ]]; then
        word=
        words+=('')
    fi
    COMPREPLY=()
    lines=$("$1" completion candidates -- "${words[@]}" 2>/dev/null) || return 0
    if [[ -z $lines ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return 0
    fi
    while IFS= read -r word; do
        printf -v word %q "$word"
        COMPREPLY+=("$word")
    done <<<"$lines"
}
complete -F _qrvsettings qrvsettings
)bash";

constexpr std::string_view forZsh = R"zsh(#compdef qrvsettings
# Completion of qrvsettings for zsh. In ~/.zshrc, after compinit:
#   eval "$(qrvsettings completion zsh)"
_qrvsettings() {
    local lines
    local -a candidates
    lines=$("${words[1]}" completion candidates -- "${(@Q)words[2,CURRENT]}" 2>/dev/null) || return 1
    if [[ -z $lines ]]; then
        _files
    else
        candidates=("${(@f)lines}")
        compadd -a candidates
    fi
}
compdef _qrvsettings qrvsettings
)zsh";

constexpr std::string_view forFish = R"fish(# Completion of qrvsettings for fish. In config.fish:
#   qrvsettings completion fish | source
function __qrvsettings_candidates
    set -l words (commandline -opc)
    set -l last (commandline -ct)
    set -l candidates ($words[1] completion candidates -- $words[2..-1] "$last" 2>/dev/null)
    or return
    if test (count $candidates) -eq 0
        __fish_complete_path "$last"
    else
        printf '%s\n' $candidates
    end
end
complete -c qrvsettings -f -a '(__qrvsettings_candidates)'
)fish";

}  // namespace

std::string_view bashScript() {
    return forBash;
}

std::string_view zshScript() {
    return forZsh;
}

std::string_view fishScript() {
    return forFish;
}

}  // namespace Tool
