# Completion of vloutsync for bash.
_vloutsync() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local choices=
  case $previous in
    vloutsync) choices="init sample convert-jet run status list show folders books history undo window --help --version" ;;
    run) choices="import export sync" ;;
    --range) choices="selected group all" ;;
    --on-conflict) choices="skip newer card outlook stop" ;;
    --set) choices="chadd= $(printf 'OUT_CHECK%d= ' {1..10})" ;;
    --folder)
      compopt -o dirnames
      return
      ;;
    --contacts)
      compopt -o dirnames
      choices="book:"
      ;;
    --cards | --seed) return ;;
    convert-jet)
      compopt -o default
      return
      ;;
    *)
      case ${COMP_WORDS[1]} in
        run) choices="--folder --contacts --range --subgroups --group --photo --no-photo --set --on-conflict --preview --yes --quiet --notify" ;;
        undo) choices="--folder --preview --force --yes" ;;
        window) choices="--folder --contacts" ;;
        init | history | convert-jet) choices="--folder" ;;
        status) choices="--folder --contacts --all --json" ;;
        list | show) choices="--folder --contacts --json" ;;
        folders) choices="--folder --json" ;;
        books) choices="--json" ;;
        sample) choices="--folder --cards --seed" ;;
      esac
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
  [[ ${COMPREPLY[0]} == *= ]] && compopt -o nospace
  return 0
}
complete -F _vloutsync vloutsync
