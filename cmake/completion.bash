# shellcheck shell=bash
# Completes the arguments of a tool from what the tool prints with --help.

# Prints the items of a section of the help, one a line: the names of an option and the kind of its
# value, or a subcommand.
_velk_items() {
    awk -v pattern="$1" '
        /^Examples:/ { exit }
        $0 ~ pattern { line = $0; gsub(/, +/, ",", line); sub(/^ +/, "", line)
                       sub(/  .*/, "", line); gsub(",", " ", line); print line }'
}

# Completes the value of an option by the kind that the help gives for it.
_velk_complete_value() {
    local kind=$1 word=$2
    case $kind in
        DIR) mapfile -t COMPREPLY < <(compgen -d -- "$word") && compopt -o filenames 2>/dev/null ;;
        FILE) mapfile -t COMPREPLY < <(compgen -f -- "$word") && compopt -o filenames 2>/dev/null ;;
        # Words in capitals are placeholders, such as N in N|max.
        *"|"*) mapfile -t COMPREPLY < <(compgen -W "$(tr '|' '\n' <<<"$kind" | grep -v '[A-Z]')" -- "$word") ;;
    esac
}

_velk() {
    local tool=$1 word=$2 previous=$3 help options subcommands kind index
    local -a command=("$tool")
    COMPREPLY=()
    for ((index = 1; index < COMP_CWORD; ++index)); do
        if [[ ${COMP_WORDS[index]} == -- ]]; then
            # The rest is a command line of its own.
            if declare -F _command_offset >/dev/null; then
                _command_offset $((index + 1))
            else
                mapfile -t COMPREPLY < <(compgen -c -f -- "$word")
            fi
            return
        fi
    done

    help=$("$tool" --help 2>/dev/null)
    subcommands=$(sed -n '/^subcommands:/I,/^$/p' <<<"$help" | _velk_items '^  [a-z]')
    if ((COMP_CWORD > 1)) && grep -qxF -- "${COMP_WORDS[1]}" <<<"$subcommands"; then
        command+=("${COMP_WORDS[1]}")
        subcommands=''
        help=$("${command[@]}" --help 2>/dev/null)
    fi
    options=$(_velk_items '^ +-' <<<"$help")

    # The shell splits "--format=table" at the equals sign.
    if [[ $word == = ]]; then
        word=''
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    if [[ $previous == -* ]]; then
        kind=$(awk -v name="$previous" '{ for (i = 1; i < NF; ++i) if ($i == name) { print; exit } }' \
            <<<"$options" | grep -oE ' [^- ][^ ]*' | head -n 1)
        if [[ -n $kind ]]; then
            _velk_complete_value "${kind# }" "$word"
            return
        fi
    fi
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(grep -oE '(^| )-[^ ]+' <<<"$options")" -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -W "$subcommands" -- "$word")
        # Completes a subcommand if the tool has any, otherwise the name of a file.
        if [[ -z $subcommands ]]; then
            _velk_complete_value FILE "$word"
        fi
    fi
}

complete -F _velk velk-node-check velk-replay velk-run velk-tuning
