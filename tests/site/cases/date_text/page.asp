<%
// Each form of one moment; the local ones are made of its local parts, so that the header is the same everywhere.
var d = new Date(Date.UTC(2030, 6, 4, 10, 30, 15));
var names = ["January", "February", "March", "April", "May", "June", "July", "August", "September", "October",
             "November", "December"];
function two(n) { return (n < 10 ? "0" : "") + n; }
var month = names[d.getMonth()], day = d.getDate(), year = d.getFullYear(), h = d.getHours();
var time = h + ":" + two(d.getMinutes()) + ":" + two(d.getSeconds());
var half = (h % 12 || 12) + ":" + two(d.getMinutes()) + ":" + two(d.getSeconds()) + (h < 12 ? " AM" : " PM");
var forms = {
  date: d,
  slashes: (d.getMonth() + 1) + "/" + day + "/" + year + " " + time,
  halves: (d.getMonth() + 1) + "/" + day + "/" + year + " " + half,
  named: month + " " + day + ", " + year + " " + time,
  shortened: day + " " + month.substr(0, 3) + " " + year + " " + half,
  zulu: "2030-07-04T10:30:15Z",
  offset: "2030-07-04T12:30:15+02:00",
  toString: d.toString(),
  toGMTString: d.toGMTString(),
  toUTCString: d.toUTCString(),
  toISOString: d.toISOString(),
  toLocaleString: d.toLocaleString(),
  older: "Thu Jul 4 12:30:15 UTC+0200 2030",
};
for (var name in forms) {
  Response.Cookies(name) = "1";
  Response.Cookies(name).Expires = forms[name];
}

function expect(text, date) {
  Response.ExpiresAbsolute = text;
  var read = new Date(Response.ExpiresAbsolute);
  Response.Write(text + ": " + (Math.abs(read - date) < 10) + "\n");
}
expect("7/4/2030", new Date(2030, 6, 4));
expect("July 4, 2030", new Date(2030, 6, 4));
expect("4 Jul 2030", new Date(2030, 6, 4));
expect("Thu Jul 04 2030", new Date(2030, 6, 4));
expect("2030-07-04", new Date(2030, 6, 4));
expect("7/4/2030 10:30", new Date(2030, 6, 4, 10, 30));
expect("7/4/2030 10:30:15 PM", new Date(2030, 6, 4, 22, 30, 15));
expect("July 4, 2030 10:30:15.25", new Date(2030, 6, 4, 10, 30, 15, 250));
expect("7/4/29", new Date(2029, 6, 4));

var impossible = ["13/32/2030", "Feb 30, 2030", "some day", "10"];
for (var i = 0; i < impossible.length; i++) {
  try {
    Response.ExpiresAbsolute = impossible[i];
    Response.Write(impossible[i] + ": taken\n");
  } catch (e) {
    Response.Write(impossible[i] + ": " + (e.number >>> 0).toString(16) + "\n");
  }
}

// The minutes that were set, not what is left of them.
var minutes = [-1, 0, 5, 1.5, -1440, 525600];
for (var i = 0; i < minutes.length; i++) {
  Response.Expires = minutes[i];
  Response.Write(minutes[i] + " minutes: " + Response.Expires + "\n");
}
Response.ExpiresAbsolute = new Date(new Date().getTime() + 90 * 60000);
var left = Response.Expires;
Response.Write("of 90 minutes: " + (left > 60 && left < 91) + "\n");

Response.ExpiresAbsolute = "Thu, 04 Jul 2030 10:30:15 GMT";
%>
