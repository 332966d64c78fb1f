-- Sends the requests of a file in turn, over and over: each line is a path, and a cookie or nothing after a tab.
local requests, at = {}, 0

function init(arguments)
  for line in io.lines(arguments[1]) do
    local path, cookie = line:match("^([^\t]*)\t?(.*)$")
    requests[#requests + 1] = wrk.format("GET", path, cookie ~= "" and { Cookie = cookie } or nil)
  end
end

function request()
  at = at % #requests + 1
  return requests[at]
end
