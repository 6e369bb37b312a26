# Fixture: one candidate that shows the written form and the reading.
module Qiro_plugin
  def run_process(request)
    {
      'candidate' => [
        {
          'hyoki' => request['composition_string'],
          'comment' => "line one\\nreading=#{request['reading_string']}",
          'alternative_type' => 'url_jump_string',
          'alternative' => 'https://example.org/?q=1',
          'alternative_alias' => 'example',
          'info' => 'rb'
        }
      ]
    }
  end
end
