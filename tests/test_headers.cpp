// The precompiled test headers are made for this file.
