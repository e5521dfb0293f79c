# For scripts that run programs under Wine: a Windows of their own, in build/windows/wine, made once. Source it.
[ -n "${WINEPREFIX:-}" ] || export WINEPREFIX=$PWD/build/windows/wine
export WINEDEBUG=${WINEDEBUG:--all}
# Without a screen; fonts that are there.
export WINEQT_QPA_PLATFORM=offscreen WINEQT_QPA_FONTDIR='Z:\usr\share\fonts\truetype\dejavu'

wine_begin() {
  mkdir -p "$WINEPREFIX"
  # Else Wine's services would hold this script's standard output open.
  wineserver -p </dev/null >/dev/null 2>&1 || true  # one that runs already stays
  timeout 300 wine cmd /c exit </dev/null >/dev/null 2>&1
  # It says that it is Windows 7 until it is told otherwise.
  [ -e "$WINEPREFIX/.windows10" ] || timeout 120 wine winecfg -v win10 </dev/null >/dev/null 2>&1
  touch "$WINEPREFIX/.windows10"
}
wine_end() { wineserver -k 2>/dev/null || true; }
