// Relative to the page.
function names(last) {
  return prefix + last;
}
