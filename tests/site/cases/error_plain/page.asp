line one
<% undefinedFunction(); %>
