// Whether a request's head says, beyond doubt, where its body ends and whom it is for.
#pragma once

#include "http/message.h"

namespace zelto {

// 200, or the status to refuse the request with: 501 for a method or transfer coding that we do not
// know, 417 for an unknown expectation, 400 for everything that two readers could understand differently.
int check_framing(const HttpRequest& request);

// What the Connection header asks for, by the rules of the request's version.
bool wants_keep_alive(const HttpRequest& request);
// The client waits for "100 Continue" before it sends the body.
bool expects_continue(const HttpRequest& request);

}  // namespace zelto
