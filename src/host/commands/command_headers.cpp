// The precompiled headers of the libraries are made for this file.
