// From the root of the site, and ending without a line end.
var prefix = "a ";
function fails() { throw new Error(names("b")); }