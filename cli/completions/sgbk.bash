# bash completion of sgbk, which is asked for its options and encodings.
_sgbk() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} words=
  if [ "$cur" = = ]; then cur=
  elif [ "$prev" = = ]; then prev=${COMP_WORDS[COMP_CWORD-2]}
  fi
  local help=$("${COMP_WORDS[0]}" --help 2>/dev/null)
  case $prev in
    -f|--from) words=$("${COMP_WORDS[0]}" --list | sed -nE '/^From/,/^To/s/^  (\S+).*/\1/p') ;;
    -t|--to) words=$("${COMP_WORDS[0]}" --list | sed -nE '/^To/,$s/^  (\S+).*/\1/p') ;;
    --progress) words='auto always never' ;;
    *)
      # Where an option wants a file or a text, bash completes file names.
      if [[ $cur == -* && ! $help =~ " $prev"(", --"[a-z-]+)?= ]]; then
        words=$(grep -oE '^.{6}--[a-z-]+' <<< "$help" | cut -c7-)
      fi ;;
  esac
  COMPREPLY=($(compgen -W "$words" -- "$cur"))
}
complete -o default -F _sgbk sgbk
