# Completion of orvdiff for fish. The program itself knows its commands, options and what they take.

function __orvdiff_complete
    set -l words (commandline -opc)
    set -l typed (commandline -ct)
    $words[1] __complete $words[2..-1] (string unescape -- "$typed"; or echo $typed) 2>/dev/null \
        | string match --invert ':paths'
end

complete -c orvdiff -f -a '(__orvdiff_complete)'
