#include "app/CompletionScript.h"

namespace zeb {
namespace {

// Understood by bash and zsh alike.
constexpr char kCommon[] = R"zeb(
# Reads the words in front of the one to complete: where they lead, and which option waits for its value.
_zeb_walk() {
  local word
  where=$1 waiting= number=1 station= plain= home=()
  shift
  _zeb_table "$where"
  while (($# > 0)); do
    word=$1
    shift
    if [[ -n $waiting ]]; then
      [[ $word == '=' ]] && continue
      _zeb_keep "$waiting" "$word"
      waiting=
    elif [[ -z $plain && $word == '--' ]]; then
      plain=1
    elif [[ -z $plain && $word == -* ]]; then
      _zeb_value "$where" "${word%%=*}"
      if [[ $word == *=* ]]; then
        _zeb_keep "${word%%=*}" "${word#*=}"
      elif [[ -n $kind ]]; then
        waiting=$word
      fi
    elif _zeb_is_command "$word"; then
      where+=" $word"
      _zeb_table "$where"
    else
      _zeb_keep "$number" "$word"
      number=$((number + 1))
    fi
  done
}

_zeb_keep() {
  _zeb_value "$where" "$1"
  [[ $kind == service ]] && station=$2
  [[ $1 == '--home' ]] && home=(--home "$2")
}

_zeb_is_command() {
  local row
  for row in "${commands[@]}"; do [[ ${row%%:*} == "$1" ]] && return 0; done
  return 1
}

# What the program tells, a line each. One that hangs is left behind.
_zeb_ask() {
  local row
  rows=()
  while IFS= read -r -t 1 row; do
    rows+=("$row")
    ((${#rows[@]} < 1000)) || break
  done < <(timeout -k 1 1 "$@" 2>/dev/null </dev/null)
}

_zeb_names() {
  if [[ $kind == service ]]; then
    _zeb_ask "$1" "${home[@]}" service list
  elif [[ $station == [1-9]* ]]; then
    _zeb_ask "$1" "${home[@]}" output list "$station"
  fi
}
)zeb";

constexpr char kBash[] = R"zeb(
_zeb_take() {
  local row
  for row in "$@"; do [[ $row == "$cur"* ]] && COMPREPLY+=("$before$row"); done
}

_zeb_take_value() {
  local -a rows=()
  case $kind in
    file) compopt -o default ;;
    folder) compopt -o dirnames ;;
    service | output)
      _zeb_names "$1"
      # What stands behind the names is shown where nothing is put in.
      [[ $COMP_TYPE == 63 ]] || rows=("${rows[@]%%  *}")
      _zeb_take "${rows[@]}"
      ;;
    '='*)
      local IFS=' '
      _zeb_take ${kind#=}
      ;;
  esac
}

_zeb() {
  local where waiting number station plain kind before= cur=${COMP_WORDS[COMP_CWORD]}
  local -a commands=() options=() home=()
  COMPREPLY=()
  _zeb_walk "${1##*/}" "${COMP_WORDS[@]:1:COMP_CWORD-1}"
  [[ $cur == '=' ]] && cur=
  if [[ -z $waiting && -z $plain && $cur == --*=* ]]; then
    waiting=${cur%%=*} before=$waiting= cur=${cur#*=}
  fi
  _zeb_value "$where" "${waiting:-$number}"
  if [[ -n $waiting ]]; then
    _zeb_take_value "$1"
  elif [[ -z $plain && $cur == -* ]]; then
    _zeb_take "${options[@]%%:*}"
  elif ((${#commands[@]} > 0)); then
    _zeb_take "${commands[@]%%:*}"
  elif [[ -n $kind ]]; then
    _zeb_take_value "$1"
  else
    _zeb_take "${options[@]%%:*}"
  fi
}
)zeb";

constexpr char kZsh[] = R"zeb(
_zeb_take_value() {
  local -a rows
  case $kind in
    file) _files ;;
    folder) _files -/ ;;
    service | output)
      _zeb_names "$words[1]"
      rows=("${(@)rows/  /:}")
      _describe $kind rows
      ;;
    '='*) compadd -- ${=kind#=} ;;
    *) _message 'a value' ;;
  esac
}

_zeb() {
  local where waiting number station plain kind
  local -a commands options home
  _zeb_walk "${words[1]:t}" "${(@Q)words[2,CURRENT-1]}"
  if [[ -z $waiting && -z $plain && $PREFIX == --*=* ]]; then
    waiting=${PREFIX%%=*}
    compset -P 1 '*='
  fi
  _zeb_value "$where" "${waiting:-$number}"
  if [[ -n $waiting ]]; then
    _zeb_take_value
  elif [[ -z $plain && $PREFIX == -* ]]; then
    _describe -o option options
  elif (($#commands > 0)); then
    _describe command commands
  elif [[ -n $kind ]]; then
    _zeb_take_value
  else
    _describe -o option options
  fi
}
)zeb";

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string Under(const std::string& path, const std::string& word) {
  return path + " " + word;
}

std::string Row(const std::string& name, const std::string& help) {
  return " " + Quoted(name + ":" + help);
}

std::string HasCases(const CommandTable& command, const std::string& path) {
  std::string commands, options, below;
  for (const CommandTable& one : command.commands) {
    commands += Row(one.name, one.help);
    below += HasCases(one, Under(path, one.name));
  }
  for (const OptionRow& option : command.options)
    for (const std::string& name : option.names) options += Row(name, option.help);
  return "    " + Quoted(path) + ")\n      commands=(" + commands + " )\n      options=(" + options +
         " )\n      ;;\n" + below;
}

std::string ValueCase(const std::string& pattern, const std::string& value) {
  return "    " + pattern + ") kind=" + Quoted(value) + " ;;\n";
}

std::string ValueCases(const CommandTable& command, const std::string& path) {
  std::string cases;
  for (const OptionRow& option : command.options)
    for (const std::string& name : option.names)
      if (!option.value.empty()) cases += ValueCase(Quoted(Under(path, name)), option.value);
  for (std::size_t i = 0; i < command.words.size(); ++i) {
    const bool many = command.manyWords && i + 1 == command.words.size();
    const std::string number =
        many ? Quoted(path + " ") + "[0-9]*" : Quoted(Under(path, std::to_string(i + 1)));
    cases += ValueCase(number, command.words[i]);
  }
  for (const CommandTable& one : command.commands) cases += ValueCases(one, Under(path, one.name));
  return cases;
}

}  // namespace

std::string CompletionScript(const std::string& shell, const std::vector<CommandTable>& programs) {
  std::string names, has, values;
  for (const CommandTable& program : programs) {
    names += " " + program.name;
    has += HasCases(program, program.name);
    values += ValueCases(program, program.name);
  }
  const bool isZsh = shell == "zsh";
  return (isZsh ? "#compdef" + names + "\n" : std::string()) + "# Made by `zebctl completion " + shell +
         "` from the tables that --help comes from.\n\n" +
         "# What stands behind a program and its commands.\n_zeb_table() {\n  commands=() options=()\n"
         "  case $1 in\n" +
         has +
         "  esac\n}\n\n# What an option or the word of a number takes.\n_zeb_value() {\n  kind=\n"
         "  case \"$1 $2\" in\n" +
         values + "  esac\n}\n" + kCommon +
         (isZsh ? kZsh +
                      std::string(
                          "\nif [[ $funcstack[1] == _zebctl ]]; then\n  _zeb \"$@\"\nelse\n  compdef _zeb") +
                      names + "\nfi\n"
                : kBash + std::string("\ncomplete -F _zeb") + names + "\n");
}

}  // namespace zeb
