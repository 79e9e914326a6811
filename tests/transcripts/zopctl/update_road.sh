#!/bin/sh
# An update from $set that an event disturbs at a packet of a stage: what it says last, its exit code,
# the modem afterwards, and the next run where there is one.
# Usage: update_road.sh STAGE PACKET [EVENT]; without an event all of them, at the same time.
# In the environment: set, asks (the modem's scenario), back (when a device that hangs up is back), and
# of the next run verb, fault, signal (a packet). This runs a hundred times: it starts few programs.
EVENTS='stop again kill left hang-up refusal wrong'
stage=$1 packet=$2 event=$3 name=${2%%,*} skip=${2#"${2%%,*}"}
if [ -z "$event" ]; then
  for event in $EVENTS; do sh "$0" "$stage" "$packet" "$event" > "$stage $event" 2>&1 & done
  wait
  # The answer to the switch may be lost with the device: then the modem may be in its download mode.
  for event in $EVENTS; do cat "$stage $event"; done |
    sed 's/was told to switch to its download mode and may be there/is in its download mode/'
  exit
fi
mkdir "at $stage $event" && cd "at $stage $event" && mkfifo path || exit
export ZOPCTL_STATE_DIR="$PWD/kept" ZOPCTL_LOCK_DIR="$PWD"
case $event in
  stop) set -- --run "$packet:kill -TERM \$(cat pid)" ;;
  again) set -- --run "$packet:kill -TERM \$(cat pid); sleep 0.1; kill -TERM \$(cat pid)" ;;
  kill) set -- --run "$packet:kill -KILL \$(cat pid)" ;;
  left) set -- --run "$packet:kill -KILL \$(cat pid)" ${signal:+--run "$signal:kill -TERM \$(cat pid)"} ;;
  hang-up) set -- --fault "hang-up=2:${back:+back=$back,}request=$name$skip" ;;
  refusal) set -- --fault "error=20:request=$name$skip" ;;
  no-journal) set -- --run "$packet:set kept/*; rm \"\$1\"; mkdir \"\$1\"" ;;
  wrong) set -- --fault "wrong-echo:request=$name$skip" ;;
esac

start() {
  zop-modem-sim ${asks-../asks.toml} --link modem --state state --speed 100 "$@" > path 2> errors & modem=$!
  read -r device < path
}

stop() { kill $modem; wait $modem; }

run() {
  zopctl --device modem --sim-speed 100 firmware "$@" > out 2>&1 & zopctl=$!
  echo $zopctl > pid
  wait $zopctl 2> /dev/null  # without the word "Killed"
  code=$?
}

journal() {
  written='' step='' only=''
  for file in kept/*; do
    while read -r key value; do
      case $key$value in
        '"is_written":true,') written=written ;;
        '"is_written":false,') written=begun ;;
        '"nv_step":'*) step=" NV step ${value%,}" ;;
        '"only_switched":true,') only=yes ;;
      esac
    done < "$file"
  done 2> /dev/null
  [ -z "$only" ] || [ "$written$step" != 'begun NV step 0' ] || written='only switched' step=''
  journal=${written:+, journal: $written$step}
}

# The last line, and when wanted those before it that say what went before.
told() {
  while IFS= read -r line; do
    last=$line
    case $2$line in
      all*'broke off'* | all'  the modem '*' its NV items'* | all*'still runs'* | all*'not known which'*)
        rest=${line#*begun * with }
        [ "$rest" = "$line" ] || line="${line%%begun *}begun *,${rest#*,}"
        echo "  $line"
        ;;
    esac
  done < out
  echo "$1${last#zopctl: }"
}

start "$@"
run update "$set" --yes
if [ "$event" = left ]; then sleep 0.2; else stop; fi
until [ -e state ]; do sleep 0.05; done
read -r state < state
case $state in *'"half_written":0'*) half='' ;; *) half=', half written' ;; esac
version=${state#*'"version":"'}
journal
echo "$stage, $event: exit $code, ${version%%'"'*}$half$journal"
[ "$code" = 137 ] || told '  '
case $event in kill | left) ;; *) exit ;; esac
# Somebody else comes, and has cycled its power or left it as it was.
[ -n "$journal" ] || [ "$event" = left ] || exit
[ "$event" = left ] || start ${fault:+--fault "$fault"} ${signal:+--run "$signal:kill -TERM \$(cat pid)"}
verb=${verb:-finish}
case $journal in *written*) ;; *) verb=update ;; esac
[ "$verb" = finish ] || verb="$verb $set"
run $verb --yes
stop
journal
echo "  then: exit $code$journal"
told '    ' all
