; All that is to be read in an element
([(text) (entity)] @result)
