// The functions that stand in until the host registers its own.

#pragma once

// Prints "Kestrovane: " and the formatted text to standard output.
int __cdecl DefaultLogSink(int level, const char* format, ...);

// Prints the formatted text alone.
int __cdecl PlainLogSink(int level, const char* format, ...);

// Does nothing.
int __cdecl NullKeepAlive(int seconds, ...);
