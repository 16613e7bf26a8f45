# What may stand next in a line of lumivault-cli, for bash. The program itself tells.
_lumivault_cli() {
    local line word
    local -a words=("${COMP_WORDS[@]:1:COMP_CWORD}")
    COMPREPLY=()
    while IFS= read -r line; do
        case $line in
        FILES) compopt -o default ;;
        FOLDERS) compopt -o dirnames ;;
        *)
            word=${line%%$'\t'*}
            case $word in
            *[!a-zA-Z0-9_./,:@%+=-]*) word=$(printf %q "$word") ;;
            esac
            COMPREPLY+=("$word")
            ;;
        esac
    done < <(lumivault-cli complete "${words[@]}" 2>/dev/null)
    # One that ends a list of types goes on after a comma.
    if [ "${COMP_WORDS[COMP_CWORD - 1]}" = --types ]; then
        compopt -o nospace
    fi
}
complete -F _lumivault_cli lumivault-cli
