# What may stand next in a line of lumivault-cli, for fish. The program itself tells.
function __lumivault_cli_words
    set -l typed (string unescape -- (commandline --current-token))
    set -l before (commandline --tokenize --cut-at-cursor --current-process)
    for line in (lumivault-cli complete $before[2..-1] "$typed" 2>/dev/null)
        switch $line
            case FILES
                __fish_complete_path "$typed"
            case FOLDERS
                __fish_complete_directories "$typed"
            case '*'
                echo $line
        end
    end
end
complete --command lumivault-cli --no-files --arguments '(__lumivault_cli_words)'
