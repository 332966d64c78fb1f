<%
// The order of a page's events, and what answering False skips.
function run(answers, setup) {
  var log = [];
  var script = {};
  ["On_StartProcess", "On_StartCommand", "OnCommand_", "OnCommand_Go", "On_EndCommand", "On_StartDraw", "OnTemplate_t",
   "OnDrawTemplate_t", "OnTemplate_u", "On_EndDraw", "On_EndProcess", "On_FirstAccess", "On_LastAccess"].forEach(function (name) {
    if (answers[name] === "none") return;
    script[name] = function (m) {
      log.push(name.replace(/^On_?/, ""));
      var answer = answers[name];
      return typeof answer === "function" ? answer(m) : answer;
    };
  });
  var mirt = Server.CreateObject("Mirt");
  mirt.AddScript(script);
  mirt.Command = "Go";
  mirt.DefaultTemplate = "t";
  if (setup) setup(mirt);
  try { mirt.Process(); } catch (e) { log.push("[" + e.message.replace(/\[.*/, "") + "]"); }
  Response.Write(log.join(" ") + "\n");
}
run({});
run({ On_StartProcess: false });
run({ On_StartCommand: false });
run({ On_EndCommand: false });
run({ On_StartDraw: false });
run({ OnCommand_Go: false });
run({ OnCommand_Go: "none" });
run({ OnTemplate_t: false }, function (m) { m.Template = ""; });
run({ On_StartProcess: 0, On_StartCommand: "", On_StartDraw: null });
run({ OnCommand_: "none" }, function (m) { m.Command = ""; });
run({}, function (m) { m.Command = ""; });
run({ OnDrawTemplate_t: function (m) { m.Template = "u"; return false; } });
run({ On_StartDraw: function (m) { m.Template = "u"; } });
run({ On_StartCommand: function (m) { m.Command = "Stay"; } });
run({ OnCommand_Go: function () { throw new Error("broken"); } });
run({ OnCommand_Go: function (m) { m.Command = ""; return false; } });
run({ OnTemplate_t: function (m) { m.Template = "none"; return false; } });
run({ OnDrawTemplate_t: function () { throw new Error("broken"); } });
run({ On_FirstAccess: function () { throw new Error("broken"); } }, function (m) { m.Name = "other"; });
run({ OnDrawTemplate_t: "none" }, function (m) { m.DefaultTemplate = ""; });
run({}, function (m) { m.Name = "one"; });
run({ OnCommand_Go: function (m) { m.Abandon(); } }, function (m) { m.Name = "one"; });
run({}, function (m) { m.Name = "one"; });
run({ On_EndProcess: function (m) { m.Abandon(); }, On_LastAccess: function () { throw new Error("broken"); } }, function (m) { m.Name = "one"; });
run({ On_FirstAccess: false }, function (m) { m.Name = "one"; });
run({}, function (m) { m.AddScript({ On_StartProcess: function () { return false; } }); });
run({ On_StartProcess: false }, function (m) { m.Backable = true; });
%>
