# Completion of value for fish, which asks the program what may stand at the cursor.

# The words before the cursor without quotes, the one that is typed last.
function __value_words
    set -l words (commandline -opc)
    set -l typed (commandline -ct)
    # A quotation mark that is still open is none of the word.
    set -l plain (string unescape -- $typed)
    or set plain (string unescape -- $typed\' $typed\" | head -n 1)
    or set plain (string trim -l -c '\'"' -- $typed)
    printf '%s\n' $words "$plain"
end

# The files that start with $argv[3]: $argv[1] is "file" or "folder", $argv[2] the ending that is meant or "*".
function __value_files
    set -l start (string escape --no-quoted -- $argv[3] | string replace -r '^\\\\~' '~')
    set -l found (complete -C "'' $start" | string replace -r '\t.*' '')
    set -l folders (string match -- '*/' $found)
    if test $argv[1] = folder
        printf '%s\n' $folders
        return
    end
    set -l meant $found
    if test "$argv[2]" != '*'
        set meant $folders (string match -- "*.$argv[2]" $found)
        # Where no name has the ending, any may be meant.
        set -q meant[1]
        or set meant $found
    end
    printf '%s\n' $meant
end

function __value_complete
    set -l words (__value_words)
    set -l prefix ''
    $words[1] complete -- $words[2..] 2>/dev/null | while read -l -d \t kind text about
        switch $kind
            case word part
                printf '%s\t%s\n' $text $about
            case prefix
                set prefix $text
            case file folder
                set -l start (string replace -- $prefix '' $words[-1])
                for name in (__value_files $kind $text $start)
                    printf '%s%s\n' $prefix $name
                end
        end
    end
end

complete -c value -f -a '(__value_complete)'
