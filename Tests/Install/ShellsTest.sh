#!/usr/bin/env bash
# Checks that man and the shells find what an installation has for them. The argument is its folder.
set -euo pipefail

prefix=$1
export PATH=$prefix/bin:$PATH XDG_DATA_DIRS=$prefix/share MANPATH=$prefix/share/man MANPAGER=cat
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME=$home XDG_DATA_HOME=$home XDG_CONFIG_HOME=$home XDG_CACHE_HOME=$home

# expect WHAT TEXT WANTED
expect() {
  [[ $2 == $3 ]] || { echo "$1: $2" >&2; exit 1; }
}

for command in $(value complete -- '' | cut -f 2); do
  expect "man value-$command" "$(man "value-$command")" "*VALUE-${command^^}(1)*SYNOPSIS*"
done
expect "man value" "$(man value)" "*VALUE(1)*value-run(1)*"

bash_script='
  source /usr/share/bash-completion/bash_completion
  _completion_loader value
  COMP_WORDS=(value sel) COMP_CWORD=1 COMP_LINE="value sel" COMP_POINT=9
  _value value sel value
  echo "${COMPREPLY[*]}"'
expect "bash offers for \"value sel\"" "$(bash --norc -c "$bash_script")" selftest

zsh_script='
  fpath=($FOLDER $fpath)
  autoload -U compinit
  compinit -u -D
  print -r -- $_comps[value]
  autoload +X _value && print -r -- ${functions[_value]:+loaded}'
expect "zsh completes value with" "$(FOLDER=$prefix/share/zsh/site-functions zsh -f -c "$zsh_script")" $'_value\nloaded'

fish_script='
  set -p fish_complete_path $FOLDER
  complete -C "value sel"'
offered=$(FOLDER=$prefix/share/fish/vendor_completions.d fish --no-config -c "$fish_script")
expect "fish offers for \"value sel\"" "$offered" $'selftest\t*'
