#!/bin/sh
# Tries the site with curl while it is served:  sh test.sh [ADDRESS]
address=${1:-http://127.0.0.1:8080}
cookies=$(mktemp)
trap 'rm -f "$cookies"' EXIT
failed=0

# The page, with the visitor's cookie.
ask() { curl -s -L -b "$cookies" -c "$cookies" "$@" "$address/default.asp"; }
# The field that carries the command of this button in the page at standard input; it changes with every command.
button() { sed -n 's/.*<button[^>]* name="\([^"]*\)" value="'"$1"'".*/\1/p' | head -n 1; }
press() { command=$1; shift; ask -d "$(ask | button "$command")=$command" "$@"; }
has() { if printf '%s' "$2" | grep -q -F "$3"; then echo "ok    $1"; else echo "FAIL  $1"; failed=1; fi; }
has_not() { if [ -z "$2" ] || printf '%s' "$2" | grep -q -F "$3"; then echo "FAIL  $1"; failed=1; else echo "ok    $1"; fi; }

has 'the page is drawn' "$(ask)" '<h1>'
words="a <b> & \"c\" $$"
page=$(press Add --data-urlencode "words=$words")
has 'what is added is shown, as text' "$page" "a &lt;b&gt; &amp; &quot;c&quot; $$"
has 'nothing is not added' "$(press Add -d words=)" 'Please write something.'
id=$(printf '%s' "$page" | grep -B3 -F " $$<" | sed -n 's/.*name="id" value="\([0-9]*\)".*/\1/p' | head -n 1)
has_not 'what is deleted is gone' "$(press Delete -d "id=$id")" " $$<"
has 'nobody reads the database' "$(curl -s -o /dev/null -w '%{http_code}' "$address/app_data/list.db")" 404
exit $failed
