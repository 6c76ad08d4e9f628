-- Counts words.
local counts = setmetatable({}, { __index = function() return 0 end })

local function add(word, ...)
  counts[word] = counts[word] + 1
  return select("#", ...)
end

for word in io.read("*a"):gmatch("%a+") do
  add(word:lower())
end

local names = {}
for name, count in pairs(counts) do
  if count > 1 and name ~= "the" then
    names[#names + 1] = name .. " " .. count
  end
end
table.sort(names)
--[[ The longest
     first. ]]
repeat
  print(table.remove(names) or [[nothing]])
until #names == 0
