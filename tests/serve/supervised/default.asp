<%@ EnableSessionState="False" %>
served
