// The tests of this file are being written.
