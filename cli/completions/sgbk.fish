# fish completion of sgbk, which is asked for its options and encodings.
set -l option '^  (-.|  )[, ] --([a-z-]+)(\[?)=?([A-Z]*)\]? +(.*)'
sgbk --help | string replace -rf $option '$1\t$2\t$3$4\t$5' |
    while read -d \t -l letter name argument help
        set -l more
        switch $name,$argument
            case from,NAME
                set more -x -a "(sgbk --list | sed -nE '/^From/,/^To/s/^  (\S+).*/\1/p')"
            case to,NAME
                set more -x -a "(sgbk --list | sed -nE '/^To/,\$s/^  (\S+).*/\1/p')"
            case '*,WHEN'
                set more -x -a 'auto always never'
            case '*,FILE' '*,DIR'
                set more -r -F
            case '*,N' '*,TEXT'
                set more -x
        end
        string match -q -- '-*' $letter && set -a more -s (string sub -s 2 -- $letter)
        complete -c sgbk -l $name -d $help $more
    end
