// Nothing but the precompiled headers that all tests share.
