function result = options(arguments)
%OPTIONS  Name and value pairs with their defaults; an unknown name is an error.
result = struct('range', [], 'allowIncomplete', false, 'suffix', '');
names = {'Range', 'AllowIncomplete', 'Suffix'};
for k = 1:2:numel(arguments)
    name = arguments{k};
    known = ischar(name) && any(strcmp(name, names));
    if ~known || k == numel(arguments)
        error('stalwick:usage', 'options are Range, AllowIncomplete and Suffix, each with a value');
    end
    result.([lower(name(1)), name(2:end)]) = arguments{k + 1};
end
end

% SPDX-License-Identifier: BSD-3-Clause
