// The precompiled headers of the tests are made with this source.
