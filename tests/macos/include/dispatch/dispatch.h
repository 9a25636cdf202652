// The part of libdispatch that the backend uses, declared anew so that it compiles where there is no Apple SDK.
#pragma once

using dispatch_queue_t = struct dispatch_queue_s*;
using dispatch_function_t = void (*)(void*);

extern "C" {
extern struct dispatch_queue_s _dispatch_main_q;
void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
}

inline dispatch_queue_t dispatch_get_main_queue() { return &_dispatch_main_q; }
