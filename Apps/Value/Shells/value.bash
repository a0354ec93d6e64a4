# Completion of value for bash, which asks the program what may stand at the cursor.

# Adds the names of files or folders that start with $3: $1 is "file" or "folder", $2 the ending that is meant or "*".
_value_files() {
  local -a names=()
  if [[ $1 == folder ]]; then
    mapfile -t names < <(compgen -d -- "$3")
  elif [[ $2 != '*' ]]; then
    mapfile -t names < <(compgen -d -- "$3"; compgen -f -X "!*.$2" -- "$3")
  fi
  # Where no name has the ending, any may be meant.
  if [[ $1 == file && ${#names[@]} -eq 0 ]]; then
    mapfile -t names < <(compgen -f -- "$3")
  fi
  found+=("${names[@]}")
}

# Puts the line together from its words for whoever calls _value without one. Bash has split them at "=" and ":".
_value_line() {
  local word last=' '
  for word in "${COMP_WORDS[@]:0:COMP_CWORD+1}"; do
    [[ $word == [=:]* || $last == *[=:] ]] || line+=' '
    line+=$word
    last=$word
  done
  line=${line# }
}

_value() {
  # COMP_POINT counts bytes.
  local LC_ALL=C
  local line=${COMP_LINE:0:COMP_POINT}
  [[ -n $COMP_LINE ]] || _value_line
  local kind text about prefix='' quote='' name
  local -a words=() parts=() found=()
  while IFS=$'\t' read -r kind text about; do
    case $kind in
      word) words+=("$text") ;;
      part) parts+=("$text") ;;
      prefix) prefix=$text ;;
      quote) quote=$text ;;
      file | folder) _value_files "$kind" "$text" "$about" ;;
    esac
  done < <("${1/#\~\//$HOME/}" complete --bash "$line" "$COMP_WORDBREAKS" 2>/dev/null)

  if [[ -z $prefix && ${#words[@]} -eq 0 && ${#parts[@]} -eq 0 ]]; then
    # Bash quotes them itself, and ends those of folders with a slash.
    compopt -o filenames 2>/dev/null
    COMPREPLY=("${found[@]}")
    return
  fi
  for name in "${found[@]}"; do
    text=$name
    # A tilde at the start stays one.
    [[ -n $quote ]] || printf -v text %q "$name"
    text=${text/#\\\~/\~}
    text=${text/#\\~/\~}
    if [[ -d ${name/#\~\//$HOME/} ]]; then
      parts+=("$prefix$text/")
    else
      words+=("$prefix$text")
    fi
  done
  COMPREPLY=("${words[@]}" "${parts[@]}")
  if [[ ${#words[@]} -eq 0 && ${#parts[@]} -eq 1 ]]; then
    compopt -o nospace 2>/dev/null
    # Bash closes the quotation marks around the only reply; of two it takes what they have in common.
    [[ -z $quote ]] || COMPREPLY+=("${parts[0]}...")
  fi
}

complete -F _value value
