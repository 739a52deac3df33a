# Completion of vloutsync for bash.
_vloutsync() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local choices=
  case $previous in
    vloutsync) choices="init sample convert-jet run history undo window --help --version" ;;
    run) choices="import export sync" ;;
    --range) choices="selected group all" ;;
    --on-conflict) choices="skip newer card outlook stop" ;;
    --set) choices="chadd= $(printf 'OUT_CHECK%d= ' {1..10})" ;;
    --folder | --contacts)
      compopt -o dirnames
      return
      ;;
    --cards | --seed) return ;;
    convert-jet)
      compopt -o default
      return
      ;;
    *)
      case ${COMP_WORDS[1]} in
        run) choices="--folder --contacts --range --subgroups --set --on-conflict --preview --yes" ;;
        undo) choices="--folder --preview --force --yes" ;;
        window) choices="--folder --contacts" ;;
        init | history | convert-jet) choices="--folder" ;;
        sample) choices="--folder --cards --seed" ;;
      esac
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
  [[ ${COMPREPLY[0]} == *= ]] && compopt -o nospace
  return 0
}
complete -F _vloutsync vloutsync
