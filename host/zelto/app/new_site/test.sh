#!/bin/sh
# Tries the site with curl while it is served:  sh test.sh [ADDRESS]
address=${1:-http://127.0.0.1:8080}
cookies=$(mktemp)
trap 'rm -f "$cookies"' EXIT
failed=0

# The page, with the visitor's cookie.
ask() { curl -s -L -b "$cookies" -c "$cookies" "$@" "$address/default.asp"; }
# The name of the buttons in the page that was drawn last; it changes with every command.
button() { sed -n 's/.*<button name="\([^"]*\)" value="Add".*/\1/p'; }
check() {
  if printf '%s' "$2" | grep -q -F "$3"; then echo "ok    $1"; else echo "FAIL  $1"; failed=1; fi
}

check 'the page is drawn' "$(ask)" '<h1>A list</h1>'
check 'the list is empty, or has entries' "$(ask)" '<li'
words="a <b> & \"c\" $$"
page=$(ask --data-urlencode "$(ask | button)=Add" --data-urlencode "words=$words")
check 'what is added is shown, as text' "$page" "a &lt;b&gt; &amp; &quot;c&quot; $$"
check 'nothing is not added' "$(ask --data-urlencode "$(ask | button)=Add" -d words=)" 'Please write something.'
id=$(printf '%s' "$page" | grep -A1 -F " $$" | sed -n 's/.*name="id" value="\([0-9]*\)".*/\1/p')
page=$(ask --data-urlencode "$(ask | button)=Delete" -d "id=$id")
if printf '%s' "$page" | grep -q -F " $$"; then echo 'FAIL  what is deleted is gone'; failed=1; else echo 'ok    what is deleted is gone'; fi
check 'nobody reads the database' "$(curl -s -o /dev/null -w '%{http_code}' "$address/app_data/list.db")" 404
exit $failed
