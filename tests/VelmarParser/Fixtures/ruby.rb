# frozen_string_literal: true

require "set"

module Garden
  class Bed
    attr_reader :plants

    def initialize(plants = [], name: "bed")
      @plants = plants.to_set
      @name = name
    end

    def each(&block)
      return enum_for(:each) unless block_given?

      plants.each(&block)
    end

    def to_s = "#{@name} with #{plants.size} plants"
  end
end

bed = Garden::Bed.new(%w[rose bean], name: :front)
bed.each do |plant|
  case plant
  when /^r/ then puts plant.upcase
  else puts "#{plant}!"
  end
rescue ArgumentError => e
  warn e.message
end
puts <<~TEXT
  Watered: #{bed}
TEXT
