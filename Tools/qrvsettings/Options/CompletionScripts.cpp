// SPDX-License-Identifier: MIT
// The scripts for shells. Each passes the words of the line to the program, the last of them the
// one to be completed, and gets a candidate a line, with a tab before its sentence if it has one.
// No output stands for a file name, a failure for nothing.

#include "Options/Completions.h"

namespace Tool {
namespace {

// The words of `compgen -W` would be expanded, and key paths come out of a file. "=" is a word of
// its own in COMP_WORDS. bash has no place for sentences.
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
        printf -v word %q "${word%%$'\t'*}"
        COMPREPLY+=("$word")
    done <<<"$lines"
}
complete -F _qrvsettings qrvsettings
)bash";

// A file of this name in $fpath becomes the function at its first call, in which it has to complete
// as well. `_describe` takes a colon for the end of a word.
constexpr std::string_view forZsh = R"zsh(#compdef qrvsettings
# Completion of qrvsettings for zsh. In ~/.zshrc, after compinit:
#   eval "$(qrvsettings completion zsh)"
_qrvsettings() {
    local lines line word
    local -a candidates
    lines=$("${(Q)words[1]}" completion candidates -- "${(@Q)words[2,CURRENT]}" 2>/dev/null) || return 1
    if [[ -z $lines ]]; then
        _files
        return
    fi
    for line in "${(@f)lines}"; do
        word=${line%%$'\t'*}
        word=${${word//\\/\\\\}//:/\\:}
        [[ $line != *$'\t'* ]] || word+=":${line#*$'\t'}"
        candidates+=("$word")
    done
    _describe -t candidates candidate candidates
}
if [[ ${funcstack[1]} == _qrvsettings ]]; then
    _qrvsettings "$@"
else
    compdef _qrvsettings qrvsettings
fi
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
