// Text files and in-memory text through the host's stream class.
#pragma once

#include <korlib/adostream.h>

// A fresh stream, opened empty.
HRESULT new_host_stream(IKorLibStream** stream);

// The whole text of a file in the given character set. The path is taken as it is.
HRESULT read_text_file(BSTR path, BSTR charset, BSTR* text);
