// Helpers of the tests live in headers; this unit gives the support library a body.
