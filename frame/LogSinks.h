// The built-in host functions, in use until the host registers its own.

#pragma once

// Prints "Kestrovane: " and the formatted string to standard output. Throws nothing.
int __cdecl DefaultLogSink(int level, const char* format, ...);

// Prints the formatted string alone. Throws nothing.
int __cdecl PlainLogSink(int level, const char* format, ...);

// Does nothing.
int __cdecl NullKeepAlive(int seconds, ...);
