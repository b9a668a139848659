# bash completion for tulplayer

_tulplayer() {
  local cur prev words cword
  _init_completion || return
  case $prev in
    --volume) return ;;
    --demo) _filedir png; return ;;
  esac
  if [[ $cur == -* && " ${words[*]:0:cword} " != *" -- "* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--help --version --new-window --play-pause --next --previous --stop --volume
      --status --json --demo --' -- "$cur")
    return
  fi
  _filedir
}

complete -F _tulplayer tulplayer
